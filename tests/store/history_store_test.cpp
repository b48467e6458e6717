#include "store/history_store.h"

#include <gtest/gtest.h>

#include <thread>

#include "core/pipeline.h"
#include "polish/mode_defaults.h"
#include "store/failing_wal_vfs.h"
#include "store/raw_database.h"
#include "support/recording_backends.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::RawDatabase;

class HistoryStoreTest : public ::testing::Test {
protected:
    testing::TempDir dir;
    const std::string path = (dir / "weft.sqlite").string();
    HistoryStore store{path};
};

TEST_F(HistoryStoreTest, RowsComeBackWholeNewestFirstByTimestamp) {
    const HistoryRow full{.ts = 1700000000.25,
                          .app = "org.kde.kate",
                          .raw = "zażółć gęślą jaźń",
                          .polished = "Zażółć gęślą jaźń.",
                          .language = "pl",
                          .durationMs = 2500,
                          .sttMs = 310,
                          .polishMs = 420,
                          .insertMs = 15,
                          .words = 3,
                          .sttBackend = "groq",
                          .polishBackend = "openai"};
    store.add(full);
    store.add(HistoryRow{.ts = 1600000000, .app = "older, added later"});
    store.add(HistoryRow{.ts = 1800000000, .app = "newest", .language = std::nullopt});
    // Columns left NULL read as empty text.
    RawDatabase(path).exec(
        "INSERT INTO history(ts,words,stt_ms,polish_ms,insert_ms) VALUES(5,4,100,0,0),"
        "(6,6,103,0,0)");

    const auto rows = store.recent(-1);
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[0].app, "newest");
    EXPECT_FALSE(rows[0].language) << "no language stays absent, not empty";
    HistoryRow expected = full;
    expected.id = 1;
    EXPECT_EQ(rows[1], expected);
    EXPECT_EQ(rows[2].id, 2);
    EXPECT_EQ(rows[4].app, "");
    EXPECT_EQ(rows[4].polished, "");
    EXPECT_EQ(store.recent(2).size(), 2u);
    EXPECT_TRUE(store.recent(0).empty());
    EXPECT_EQ(store.stats(), (HistoryStats{.dictations = 5, .words = 13, .avgLatencyMs = 189}))
        << "an average of 189.6 truncates";
}

TEST_F(HistoryStoreTest, TheTenThousandAndFirstRowEvictsTheOldestByTimestamp) {
    // 9,999 rows with rising ts, then row 10,000 with the highest id and the smallest ts.
    RawDatabase raw(path);
    raw.exec(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < 9999) "
        "INSERT INTO history(ts,app) SELECT 1000 + i, 'bulk' FROM n");
    store.add(HistoryRow{.ts = 1.0, .app = "late but old"});
    EXPECT_EQ(store.stats().dictations, 10000);

    store.add(HistoryRow{.ts = 1e6, .app = "newest"});
    EXPECT_EQ(raw.value("SELECT COUNT(*) FROM history"), "10000");
    EXPECT_EQ(raw.value("SELECT COUNT(*) FROM history WHERE app = 'late but old'"), "0");
    EXPECT_EQ(raw.value("SELECT MIN(id) FROM history"), "1");
    // A row older than everything kept is gone in its own add.
    store.add(HistoryRow{.ts = 0.5, .app = "too old"});
    EXPECT_EQ(raw.value("SELECT COUNT(*) FROM history WHERE app = 'too old'"), "0");
    EXPECT_EQ(raw.value("SELECT COUNT(*) FROM history"), "10000");
}

TEST_F(HistoryStoreTest, ThePipelineReadsItsRulesAndWritesItsRowsHereFromAnyThread) {
    auto shared = std::make_shared<HistoryStore>((dir / "pipeline/weft.sqlite").string());
    shared->addReplacement("teh", "the", false);
    auto stt = testing::ScriptedTranscriber::returning("groq", "teh cat sat", "en");
    const Pipeline pipeline(std::make_shared<TranscriptionRouter>(
                                std::vector<std::shared_ptr<const TranscriptionBackend>>{stt}),
                            {}, shared, WeftSettings{});
    PolishContext firefox;
    firefox.appName = "Firefox";
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 5; ++i) {
                pipeline.process(std::vector<int16_t>(16000, 2000), 16000, firefox);
                shared->addDictionary("w" + std::to_string(t) + "-" + std::to_string(i));
                (void)shared->insightsSummary();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const auto rows = shared->recent(-1);
    ASSERT_EQ(rows.size(), 20u);
    EXPECT_EQ(rows[0].app, "Firefox");
    EXPECT_EQ(rows[0].raw, "teh cat sat");
    EXPECT_EQ(rows[0].polished, "The cat sat") << "the rules used the stored replacement";
    EXPECT_EQ(shared->dictionary().size(), 20u);
}

TEST(HistoryStoreWrites, ARowAndItsPruneShareOneFlushAndAFailedCommitKeepsTheRow) {
    testing::FailingWalVfs disk;
    testing::TempDir dir;
    HistoryStore store((dir / "weft.sqlite").string());
    store.add(HistoryRow{.ts = 1, .app = "first"});
    disk.walSyncs = 0;
    store.add(HistoryRow{.ts = 2, .app = "second"});
    EXPECT_EQ(disk.walSyncs, 1);

    disk.failWrites = 1;
    store.add(HistoryRow{.ts = 3, .app = "written when the disk failed"});
    EXPECT_LE(disk.failWrites, 0) << "the commit did not meet the failing write";
    const auto rows = store.recent(-1);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].app, "written when the disk failed");
}

TEST_F(HistoryStoreTest, VocabularyKeepsItsOrderAndUniqueness) {
    // Dictionary: one of each exact phrase, in order; text ends at a NUL.
    for (const std::string& phrase : std::vector<std::string>{
             "Kubernetes", "Kubernetes", "kubernetes", "Ärzte", std::string("ab\0cd", 5)}) {
        store.addDictionary(phrase);
    }
    EXPECT_EQ(store.dictionary(),
              (std::vector<std::string>{"Kubernetes", "ab", "kubernetes", "Ärzte"}));
    store.deleteDictionary("Kubernetes");
    store.deleteDictionary("absent");
    EXPECT_EQ(store.dictionary(), (std::vector<std::string>{"ab", "kubernetes", "Ärzte"}));

    // Replacements repeat in insertion order and are deleted together.
    store.addReplacement("teh", "the", false);
    store.addReplacement("(\\d+) pct", "$1%", true);
    store.addReplacement("teh", "THE", false);
    EXPECT_EQ(store.replacements(),
              (std::vector<Replacement>{
                  {"teh", "the", false}, {"(\\d+) pct", "$1%", true}, {"teh", "THE", false}}));
    store.deleteReplacement("teh");
    EXPECT_EQ(store.replacements(), (std::vector<Replacement>{{"(\\d+) pct", "$1%", true}}));

    // Snippets: one per trigger, sorted by trigger.
    store.addSnippet("sig", "Best, Ann");
    store.addSnippet("addr", "1 Main St");
    store.addSnippet("sig", "Cheers, Ann");
    EXPECT_EQ(store.snippets(),
              (std::vector<Snippet>{{"addr", "1 Main St"}, {"sig", "Cheers, Ann"}}));
    store.deleteSnippet("addr");
    EXPECT_EQ(store.snippets(), (std::vector<Snippet>{{"sig", "Cheers, Ann"}}));
}

TEST_F(HistoryStoreTest, TonePatternsAreUniqueAcrossMatchKinds) {
    store.seedDefaultsIfEmpty();
    store.addToneProfile("gmail", "casual");  // replaces the seed row of kind "title"
    store.addToneProfile("jira", "formal", "title");
    RawDatabase(path).exec(
        "INSERT INTO tone_profiles(bundle_pattern,tone,match_kind) VALUES('zed','plain',NULL)");
    auto find = [&](const std::string& pattern) -> std::optional<ToneProfile> {
        for (const auto& profile : store.toneProfiles()) {
            if (profile.pattern == pattern) {
                return profile;
            }
        }
        return std::nullopt;
    };
    EXPECT_EQ(find("gmail"), (ToneProfile{"gmail", "casual", "app"}));
    EXPECT_EQ(find("zed"), (ToneProfile{"zed", "plain", "app"})) << "NULL reads as app";
    EXPECT_EQ(store.toneProfiles().size(), 9u);
    store.deleteToneProfile("jira", "app");
    EXPECT_TRUE(find("jira")) << "the kind must match";
    store.deleteToneProfile("jira", "title");
    store.deleteToneProfile("slack");
    EXPECT_FALSE(find("jira"));
    EXPECT_FALSE(find("slack"));
    std::vector<std::string> patterns;
    for (const auto& profile : store.toneProfiles()) {
        patterns.push_back(profile.pattern);
    }
    EXPECT_TRUE(std::is_sorted(patterns.begin(), patterns.end()));
}

TEST_F(HistoryStoreTest, ModesRoundTripBySlotAndBuiltInSlotsSurviveDeletion) {
    const Mode custom{.slot = 9,
                      .name = "Résumé — 日本語",
                      .instructions = "Line one.\nLine \"two\".",
                      .outputLanguage = "ja",
                      .signature = "signs-off",
                      .isScreenshot = true,
                      .isCommand = true,
                      .enabled = false};
    store.saveMode(custom);
    store.saveMode({.slot = -2, .name = "negative"});
    store.saveMode({.slot = 3, .name = "three"});
    store.saveMode({.slot = 3, .name = "three again"});
    const auto modes = store.modes();
    ASSERT_EQ(modes.size(), 3u);
    EXPECT_EQ(modes[0].slot, -2);
    EXPECT_EQ(modes[1].name, "three again");
    EXPECT_EQ(modes[2], custom);
    EXPECT_FALSE(store.mode(9)) << "a disabled voice is not found";

    store.resetModesToDefaults();
    EXPECT_EQ(store.modes(), ModeDefaults::seed());
    store.deleteMode(2);
    store.saveMode({.slot = 6, .name = "Mine"});
    store.deleteMode(6);
    EXPECT_EQ(store.modes(), ModeDefaults::seed());
}

TEST_F(HistoryStoreTest, FormalLanguageModesTakeTheLowestFreeSlot) {
    store.resetModesToDefaults();
    const Mode german = store.addFormalLanguageMode("de");
    EXPECT_EQ(german, (Mode{.slot = 6,
                            .name = "Formal message — de",
                            .instructions = std::string(ModeDefaults::formalInstructions),
                            .outputLanguage = "de",
                            .signature = "signs-off"}));
    EXPECT_EQ(store.mode(6), german);
    store.saveMode({.slot = 7, .name = "seven", .enabled = false});
    store.addFormalLanguageMode("fr");  // 8: the disabled 7 still holds its slot
    store.deleteMode(6);
    EXPECT_EQ(store.addFormalLanguageMode("it").slot, 6);
    EXPECT_EQ(store.addFormalLanguageMode("es").slot, 9);
}

TEST_F(HistoryStoreTest, SeedingFillsOnlyTablesThatAreEmpty) {
    store.seedDefaultsIfEmpty();
    EXPECT_EQ(store.modes(), ModeDefaults::seed());
    EXPECT_EQ(store.dictionary().size(), 5u);
    EXPECT_EQ(store.toneProfiles(), (std::vector<ToneProfile>{{"gmail", "formal", "title"},
                                                              {"iterm", "plain", "app"},
                                                              {"mail", "formal", "app"},
                                                              {"slack", "casual", "app"},
                                                              {"telegram", "casual", "app"},
                                                              {"terminal", "plain", "app"},
                                                              {"whatsapp", "casual", "app"}}));
    // The user's edits stand at the next start...
    store.deleteToneProfile("slack");
    for (const auto& phrase : store.dictionary()) {
        store.deleteDictionary(phrase);
    }
    store.addDictionary("mine");
    store.saveMode({.slot = 0, .name = "My dictation"});
    store.seedDefaultsIfEmpty();
    EXPECT_EQ(store.toneProfiles().size(), 6u);
    EXPECT_EQ(store.dictionary(), std::vector<std::string>{"mine"});
    EXPECT_EQ(store.mode(0)->name, "My dictation");
    // ...and a table the user emptied gets its defaults back, alone.
    RawDatabase(path).exec("DELETE FROM modes");
    store.seedDefaultsIfEmpty();
    EXPECT_EQ(store.modes(), ModeDefaults::seed());
    EXPECT_EQ(store.toneProfiles().size(), 6u);
}

}  // namespace
}  // namespace tevra
