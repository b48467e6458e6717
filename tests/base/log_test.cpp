#include "base/log.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "base/iso8601.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;
using testing::modeOf;
using testing::readFile;

// 2026-11-22T22:06:37.900Z
const system_clock::time_point fixedMoment = system_clock::time_point(1795385197900ms);
WallClock fixedClock() {
    return [] { return fixedMoment; };
}
const std::string kStamp = "[2026-11-22T22:06:37Z] ";

TEST(ISO8601, UTCWithWholeSecondsAndZ) {
    EXPECT_EQ(iso8601UTC(system_clock::time_point{}), "1970-01-01T00:00:00Z");
    EXPECT_EQ(iso8601UTC(fixedMoment), "2026-11-22T22:06:37Z");
    EXPECT_EQ(iso8601UTC(system_clock::time_point(951868799999ms)), "2000-02-29T23:59:59Z");
    EXPECT_EQ(iso8601UTC(system_clock::time_point(-1ms)), "1969-12-31T23:59:59Z");
}

TEST(Logger, WritesOneStampedLinePerMessageToAPrivateFile) {
    testing::TempDir tmp;
    const fs::path dir = tmp / "share" / "Tevra";
    {
        Logger log(dir, fixedClock());
        log.write("hotkeys: xinput2");
        log.write("");
        log.flush();
        EXPECT_EQ(modeOf(dir), 0700u);
        EXPECT_EQ(modeOf(dir / "tevra.log"), 0600u);
        fs::permissions(dir / "tevra.log", fs::perms(0644));
        log.write("café → ok");
    }  // destruction writes what is still queued
    EXPECT_EQ(modeOf(dir / "tevra.log"), 0600u);
    EXPECT_EQ(readFile(dir / "tevra.log"),
              kStamp + "hotkeys: xinput2\n" + kStamp + "\n" + kStamp + "café → ok\n");

    // An unwritable directory loses lines quietly.
    std::ofstream(tmp / "plain") << "x";
    Logger lost(tmp / "plain" / "Tevra", fixedClock());
    lost.write("lost");
    lost.flush();
    EXPECT_FALSE(fs::exists(tmp / "plain" / "Tevra"));
}

TEST(Logger, RotatesOnlyAFileLargerThanAMillionBytes) {
    testing::TempDir tmp;
    Logger log(tmp.path(), fixedClock());
    const fs::path current = tmp / "tevra.log";
    const fs::path rotated = tmp / "tevra.1.log";
    EXPECT_EQ(log.file().rotatedPath(), rotated);
    const std::string line = kStamp + "next\n";

    std::ofstream(current) << std::string(1'000'000, 'o');
    log.write("next");
    log.flush();
    EXPECT_FALSE(fs::exists(rotated));
    EXPECT_EQ(fs::file_size(current), 1'000'000 + line.size());  // one line past the limit

    log.write("next");  // now above the limit: moved aside before this line
    log.flush();
    EXPECT_EQ(fs::file_size(rotated), 1'000'000 + line.size());
    EXPECT_EQ(readFile(current), line);

    // A second rotation replaces the older file as a whole.
    std::ofstream(current) << std::string(1'000'001, 'o');
    log.write("after");
    log.flush();
    EXPECT_EQ(fs::file_size(rotated), 1'000'001u);
    EXPECT_EQ(readFile(current), kStamp + "after\n");
    EXPECT_EQ(modeOf(current), 0600u);
}

TEST(Logger, LinesFromManyThreadsAreWholeAndInTheirThreadsOrder) {
    testing::TempDir tmp;
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
    std::istringstream lines(readFile(tmp / "tevra.log"));
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

TEST(ProcessLog, WritesWhereConfiguredAndCanBeReset) {
    testing::TempDir tmp;
    Log::configure(tmp / "a", fixedClock());
    Log::write("one");
    std::thread([] { Log::write("two"); }).join();
    Log::configure(tmp / "b", fixedClock());  // lines already written stay in the first log
    Log::write("three");
    Log::flush();
    Log::reset();
    EXPECT_EQ(readFile(tmp / "a" / "tevra.log"), kStamp + "one\n" + kStamp + "two\n");
    EXPECT_EQ(readFile(tmp / "b" / "tevra.log"), kStamp + "three\n");
}

}  // namespace
}  // namespace tevra
