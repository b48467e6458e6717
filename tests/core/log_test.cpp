#include "core/log.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "core/iso8601.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;
using testing::TempDir;

std::string readText(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

unsigned modeOf(const fs::path& p) {
    struct stat st {};
    return ::stat(p.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

void fillTo(const fs::path& file, std::uintmax_t bytes) {
    std::ofstream(file, std::ios::binary) << std::string(bytes, 'o');
    ASSERT_EQ(fs::file_size(file), bytes);
}

// 2026-11-22T22:06:37.900Z
const system_clock::time_point fixedMoment = system_clock::time_point(1795385197900ms);
WallClock fixedClock() {
    return [] { return fixedMoment; };
}

TEST(ISO8601, UTCWithWholeSecondsAndZ) {
    EXPECT_EQ(iso8601UTC(system_clock::time_point{}), "1970-01-01T00:00:00Z");
    EXPECT_EQ(iso8601UTC(fixedMoment), "2026-11-22T22:06:37Z");
    EXPECT_EQ(iso8601UTC(system_clock::time_point(951868799999ms)), "2000-02-29T23:59:59Z");
    EXPECT_EQ(iso8601UTC(system_clock::time_point(951868800000ms)), "2000-03-01T00:00:00Z");
    EXPECT_EQ(iso8601UTC(system_clock::time_point(-1ms)), "1969-12-31T23:59:59Z");
}

TEST(Logger, WritesOneStampedLinePerMessage) {
    TempDir tmp;
    Logger log(tmp / "Tevra", fixedClock());
    log.write("hotkeys: xinput2");
    log.write("");
    log.write("café → ok");
    log.flush();
    EXPECT_EQ(readText(tmp / "Tevra" / "tevra.log"),
              "[2026-11-22T22:06:37Z] hotkeys: xinput2\n"
              "[2026-11-22T22:06:37Z] \n"
              "[2026-11-22T22:06:37Z] café → ok\n");
}

TEST(Logger, KeepsTheDirectoryAndFilePrivate) {
    TempDir tmp;
    const fs::path dir = tmp / "share" / "Tevra";
    {
        Logger log(dir, fixedClock());
        log.write("first");
        log.flush();
        EXPECT_EQ(modeOf(dir), 0700u);
        EXPECT_EQ(modeOf(dir / "tevra.log"), 0600u);

        ::chmod((dir / "tevra.log").c_str(), 0644);
        log.write("second");
    }  // destruction writes what is still queued
    EXPECT_EQ(modeOf(dir / "tevra.log"), 0600u);
    EXPECT_EQ(readText(dir / "tevra.log"),
              "[2026-11-22T22:06:37Z] first\n[2026-11-22T22:06:37Z] second\n");
}

TEST(Logger, RotatesOnlyAFileLargerThanAMillionBytes) {
    TempDir tmp;
    Logger log(tmp.path(), fixedClock());
    const fs::path current = tmp / "tevra.log";
    const fs::path rotated = tmp / "tevra.1.log";
    EXPECT_EQ(log.file().rotatedPath(), rotated);
    const std::string line = "[2026-11-22T22:06:37Z] next\n";

    fillTo(current, 1'000'000);
    log.write("next");
    log.flush();
    EXPECT_FALSE(fs::exists(rotated));
    EXPECT_EQ(fs::file_size(current), 1'000'000 + line.size());  // one line past the limit

    log.write("next");  // now above the limit: moved aside before this line
    log.flush();
    EXPECT_EQ(fs::file_size(rotated), 1'000'000 + line.size());
    EXPECT_EQ(readText(current), line);

    // A second rotation replaces the older file as a whole.
    fillTo(current, 1'000'001);
    log.write("after");
    log.flush();
    EXPECT_EQ(fs::file_size(rotated), 1'000'001u);
    EXPECT_EQ(readText(current), "[2026-11-22T22:06:37Z] after\n");
    EXPECT_EQ(modeOf(current), 0600u);
}

TEST(Logger, LinesFromManyThreadsAreWholeAndInTheirThreadsOrder) {
    TempDir tmp;
    constexpr int threads = 8;
    constexpr int perThread = 400;
    {
        Logger log(tmp.path(), fixedClock());
        std::vector<std::thread> writers;
        for (int t = 0; t < threads; ++t) {
            writers.emplace_back([&log, t] {
                for (int i = 0; i < perThread; ++i) {
                    // Long lines, so that a torn write would show.
                    log.write("t" + std::to_string(t) + " #" + std::to_string(i) + " " +
                              std::string(200, static_cast<char>('a' + t)));
                }
            });
        }
        for (auto& w : writers) {
            w.join();
        }
    }
    std::istringstream lines(readText(tmp / "tevra.log"));
    std::vector<int> next(threads, 0);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        int t = -1, i = -1;
        ASSERT_EQ(std::sscanf(line.c_str(), "[2026-11-22T22:06:37Z] t%d #%d ", &t, &i), 2) << line;
        ASSERT_TRUE(t >= 0 && t < threads);
        EXPECT_EQ(i, next[t]++);
        EXPECT_EQ(line.substr(line.size() - 200), std::string(200, static_cast<char>('a' + t)));
    }
    EXPECT_EQ(count, threads * perThread);
}

TEST(Logger, AnUnwritableDirectoryLosesLinesQuietly) {
    TempDir tmp;
    std::ofstream(tmp / "plain") << "x";
    Logger log(tmp / "plain" / "Tevra", fixedClock());
    log.write("lost");
    log.flush();
    EXPECT_FALSE(fs::exists(tmp / "plain" / "Tevra"));
}

TEST(ProcessLog, WritesWhereConfiguredAndCanBeReset) {
    TempDir tmp;
    Log::configure(tmp / "a", fixedClock());
    Log::write("one");
    std::thread([] { Log::write("two"); }).join();
    Log::configure(tmp / "b", fixedClock());  // lines already written stay in the first log
    Log::write("three");
    Log::flush();
    Log::reset();
    EXPECT_EQ(readText(tmp / "a" / "tevra.log"),
              "[2026-11-22T22:06:37Z] one\n[2026-11-22T22:06:37Z] two\n");
    EXPECT_EQ(readText(tmp / "b" / "tevra.log"), "[2026-11-22T22:06:37Z] three\n");
}

}  // namespace
}  // namespace tevra
