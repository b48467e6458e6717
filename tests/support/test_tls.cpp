#include "support/test_tls.h"

#include <fstream>

#include "support/child_process.h"
#include "support/temp_dir.h"

namespace tevra::testing {

const TestTLS& TestTLS::shared() {
    static TempDir dir;
    static const TestTLS tls = [] {
        const std::string ca = (dir / "ca.pem").string();
        const std::string caKey = (dir / "ca.key").string();
        const std::string csr = (dir / "server.csr").string();
        const std::string extensions = (dir / "server.ext").string();
        TestTLS made{dir / "ca.pem", dir / "server.pem", dir / "server.key"};
        runProgram({"openssl",
                    "req",
                    "-x509",
                    "-newkey",
                    "ec",
                    "-pkeyopt",
                    "ec_paramgen_curve:prime256v1",
                    "-nodes",
                    "-keyout",
                    caKey,
                    "-out",
                    ca,
                    "-days",
                    "2",
                    "-subj",
                    "/CN=Tevra test CA",
                    "-addext",
                    "basicConstraints=critical,CA:TRUE",
                    "-addext",
                    "keyUsage=critical,keyCertSign,cRLSign"});
        runProgram({"openssl", "req", "-new", "-newkey", "ec", "-pkeyopt",
                    "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", made.keyFile.string(),
                    "-out", csr, "-subj", "/CN=127.0.0.1"});
        std::ofstream(extensions) << "subjectAltName=IP:127.0.0.1,DNS:localhost\n"
                                     "basicConstraints=CA:FALSE\n"
                                     "extendedKeyUsage=serverAuth\n";
        runProgram({"openssl", "x509", "-req", "-in", csr, "-CA", ca, "-CAkey", caKey,
                    "-CAcreateserial", "-out", made.certFile.string(), "-days", "2", "-extfile",
                    extensions});
        return made;
    }();
    return tls;
}

}  // namespace tevra::testing
