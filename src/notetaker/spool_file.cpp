#include "notetaker/spool_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "base/error.h"
#include "base/file_io.h"
#include "stt/wav.h"

namespace tevra {
namespace {

// A quarter second at 16 kHz between writes, and a few seconds between
// flushes to the disk: a crash loses what is buffered, a power cut at most
// the seconds since the last flush.
constexpr std::size_t kWriteSamples = 4000;
constexpr int64_t kSyncSamples = 5 * 16000;
constexpr uint32_t kLargestData = 0xFFFFFFFFu - 36 - 1;

void putU32(char* at, uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        at[i] = static_cast<char>((value >> (8 * i)) & 0xff);
    }
}

uint32_t u32(const unsigned char* at) {
    return static_cast<uint32_t>(at[0]) | static_cast<uint32_t>(at[1]) << 8 |
           static_cast<uint32_t>(at[2]) << 16 | static_cast<uint32_t>(at[3]) << 24;
}

// What our writer puts at the top: RIFF/WAVE, a 16-byte PCM format chunk for
// one 16-bit channel, then the data chunk.
bool isSpoolHeader(const unsigned char* h) {
    return std::memcmp(h, "RIFF", 4) == 0 && std::memcmp(h + 8, "WAVEfmt ", 8) == 0 &&
           u32(h + 16) == 16 && h[20] == 1 && h[21] == 0 && h[22] == 1 && h[23] == 0 &&
           h[34] == 16 && h[35] == 0 && std::memcmp(h + 36, "data", 4) == 0;
}

// Both sizes of the header for a data chunk of dataBytes.
bool writeSizes(int fd, uint64_t dataBytes) {
    const auto data = static_cast<uint32_t>(std::min<uint64_t>(dataBytes, kLargestData));
    char riff[4];
    char chunk[4];
    putU32(riff, data + 36);
    putU32(chunk, data);
    return ::pwrite(fd, riff, 4, 4) == 4 && ::pwrite(fd, chunk, 4, 40) == 4;
}

std::string reason() {
    return std::strerror(errno);
}

}  // namespace

SpoolWriter::SpoolWriter(const std::filesystem::path& file, int sampleRate) : file_(file) {
    fd_ = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd_ < 0) {
        throw MessageError("cannot create " + file.string() + ": " + reason());
    }
    const ByteBuffer header = WAV::data({}, sampleRate);
    std::string bytes(header.data(), header.size());
    putU32(bytes.data() + 4, kLargestData + 36);
    putU32(bytes.data() + 40, kLargestData);
    if (!writeAll(fd_, bytes)) {
        const std::string why = reason();
        ::close(fd_);
        fd_ = -1;
        throw MessageError("cannot write " + file.string() + ": " + why);
    }
    pending_.reserve(kWriteSamples * 2);
}

SpoolWriter::~SpoolWriter() {
    finish();
}

void SpoolWriter::fail(const std::string& what) {
    if (!failure_) {
        failure_ = "cannot " + what + " " + file_.string() + ": " + reason();
    }
}

void SpoolWriter::append(std::span<const int16_t> samples) {
    if (fd_ < 0 || failure_) {
        return;
    }
    pending_.insert(pending_.end(), samples.begin(), samples.end());
    samples_ += static_cast<int64_t>(samples.size());
    if (pending_.size() >= kWriteSamples) {
        writePending();
    }
}

void SpoolWriter::writePending() {
    if (pending_.empty() || failure_) {
        pending_.clear();
        return;
    }
    // Samples are little-endian on every machine we build for, as in a WAV file.
    const std::string_view bytes(reinterpret_cast<const char*>(pending_.data()),
                                 pending_.size() * sizeof(int16_t));
    if (!writeAll(fd_, bytes)) {
        fail("write");
    }
    unsynced_ += static_cast<int64_t>(pending_.size());
    pending_.clear();
    if (unsynced_ >= kSyncSamples) {
        ::fdatasync(fd_);
        unsynced_ = 0;
    }
}

void SpoolWriter::finish() {
    if (fd_ < 0) {
        return;
    }
    writePending();
    const off_t end = ::lseek(fd_, 0, SEEK_END);
    if (end < 0 || !writeSizes(fd_, static_cast<uint64_t>(end) - headerBytes)) {
        fail("finish");
    }
    ::fdatasync(fd_);
    ::close(fd_);
    fd_ = -1;
}

bool SpoolWriter::repair(const std::filesystem::path& file) {
    const int fd = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    std::array<unsigned char, headerBytes> header{};
    struct stat status {};
    bool repaired =
        ::pread(fd, header.data(), header.size(), 0) == static_cast<ssize_t>(header.size()) &&
        isSpoolHeader(header.data()) && ::fstat(fd, &status) == 0;
    if (repaired) {
        uint64_t dataBytes = static_cast<uint64_t>(status.st_size) - headerBytes;
        if (dataBytes % 2 != 0) {
            --dataBytes;
            repaired = ::ftruncate(fd, static_cast<off_t>(headerBytes + dataBytes)) == 0;
        }
        repaired = repaired && writeSizes(fd, dataBytes) && ::fsync(fd) == 0;
    }
    ::close(fd);
    return repaired;
}

SpoolSamples::SpoolSamples(const std::filesystem::path& file) {
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return;
    }
    struct stat status {};
    if (::fstat(fd, &status) == 0 &&
        status.st_size > static_cast<off_t>(SpoolWriter::headerBytes)) {
        mapBytes_ = static_cast<std::size_t>(status.st_size);
        void* map = ::mmap(nullptr, mapBytes_, PROT_READ, MAP_PRIVATE, fd, 0);
        if (map != MAP_FAILED) {
            map_ = map;
            const auto* bytes = static_cast<const unsigned char*>(map);
            if (isSpoolHeader(bytes)) {
                // Read front to back, once: the kernel may read ahead and drop behind.
                ::madvise(map, mapBytes_, MADV_SEQUENTIAL);
                const std::size_t count = (mapBytes_ - SpoolWriter::headerBytes) / 2;
                samples_ = {reinterpret_cast<const int16_t*>(bytes + SpoolWriter::headerBytes),
                            count};
            }
        }
    }
    ::close(fd);
}

SpoolSamples::~SpoolSamples() {
    if (map_) {
        ::munmap(map_, mapBytes_);
    }
}

}  // namespace tevra
