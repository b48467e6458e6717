#include "polish/signature.h"

#include <gtest/gtest.h>

#include <string>

namespace tevra {
namespace {

WeftSettings identity(std::string style) {
    WeftSettings s;
    s.userFirstName = " Anna ";
    s.userLastName = "Kowalska\n";
    s.userCompany = "Acme Sp. z o.o.";
    s.userPhone = "+48 600 100 200";
    s.userEmail = "anna@acme.pl";
    s.signatureStyle = std::move(style);
    return s;
}

const std::string kFull = "Anna Kowalska\nAcme Sp. z o.o.\n+48 600 100 200 \u00B7 anna@acme.pl";

TEST(Signature, EachStyleBuildsItsBlockFromTrimmedFields) {
    EXPECT_EQ(Signature::build(identity("name")), "Anna Kowalska");
    EXPECT_EQ(Signature::build(identity("name_phone")), "Anna Kowalska\n+48 600 100 200");
    EXPECT_EQ(Signature::build(identity("full")), kFull);
    EXPECT_EQ(Signature::build(identity("legal")),
              kFull + "\n\n" + std::string(Signature::defaultLegalFooter));

    auto custom = identity("custom");
    custom.userSignature = "\n  Pozdrawiam,\nAnia  \n";
    EXPECT_EQ(Signature::build(custom), "Pozdrawiam,\nAnia");

    for (const char* unknown : {"", "formal", "Full"}) {
        EXPECT_EQ(Signature::build(identity(unknown)), "Anna Kowalska") << unknown;
    }
    EXPECT_EQ(WeftSettings{}.signatureStyle, "name");
}

TEST(Signature, BlankFieldsLeaveNoSeparatorsBehind) {
    auto s = identity("full");
    s.userPhone = " \t ";
    EXPECT_EQ(Signature::build(s), "Anna Kowalska\nAcme Sp. z o.o.\nanna@acme.pl");
    s.userEmail = "";
    s.userCompany = "\n";
    EXPECT_EQ(Signature::build(s), "Anna Kowalska");
    s.userFirstName = "";
    EXPECT_EQ(Signature::build(s), "Kowalska");

    auto phoneOnly = identity("name_phone");
    phoneOnly.userFirstName = phoneOnly.userLastName = " ";
    EXPECT_EQ(Signature::build(phoneOnly), "+48 600 100 200");

    auto contactOnly = identity("full");
    contactOnly.userFirstName = contactOnly.userLastName = contactOnly.userCompany = "";
    EXPECT_EQ(Signature::build(contactOnly), "+48 600 100 200 \u00B7 anna@acme.pl");
}

TEST(Signature, NoIdentityGivesNoSignOffInAnyStyle) {
    for (const char* style : {"name", "name_phone", "full", "legal", "custom", "other"}) {
        WeftSettings s;
        s.signatureStyle = style;
        s.userFirstName = "  ";
        EXPECT_EQ(Signature::build(s), "") << style;
    }
    auto custom = identity("custom");
    custom.userSignature = " ";
    EXPECT_EQ(Signature::build(custom), "") << "custom text is never replaced by the name";
}

TEST(Signature, LegalFooterIsTheUsersOwnTextOrTheDefault) {
    auto own = identity("legal");
    own.userSignature = " Poufne. ";
    EXPECT_EQ(Signature::build(own), kFull + "\n\nPoufne.");

    // The default footer only ever follows an identity block.
    WeftSettings footerOnly;
    footerOnly.signatureStyle = "legal";
    footerOnly.userSignature = "Confidential.";
    EXPECT_EQ(Signature::build(footerOnly), "Confidential.");

    EXPECT_EQ(Signature::defaultLegalFooter,
              "This message and any attachments are confidential and intended solely for the "
              "named recipient. If you are not the intended recipient, please notify the sender "
              "and delete this message. Personal data is processed in accordance with the GDPR "
              "(RODO).");
}

TEST(Signature, PersonaNamesWhomTheGhostwriterWritesFor) {
    auto s = identity("name");
    EXPECT_EQ(Signature::persona(s), "Anna Kowalska of Acme Sp. z o.o.");
    s.userCompany = " ";
    EXPECT_EQ(Signature::persona(s), "Anna Kowalska");
    EXPECT_EQ(Signature::fullName(s), "Anna Kowalska");

    WeftSettings companyOnly;
    companyOnly.userCompany = "\tAcme\n";
    EXPECT_EQ(Signature::persona(companyOnly), "Acme");
    EXPECT_EQ(Signature::fullName(companyOnly), "");
    EXPECT_EQ(Signature::persona(WeftSettings{}), "the user");
}

}  // namespace
}  // namespace tevra
