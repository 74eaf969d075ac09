// SPDX-License-Identifier: Apache-2.0

/// \file Tests which records can be read from complete, truncated and damaged journals.
#include "framework/errors/HostError.h"
#include "framework/io/Crc32.h"
#include "framework/journal/Journal.h"
#include "tests/edits/FullDisk.h"
#include "tests/journal/JournalWork.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <utility>

namespace trovik::test {
namespace {

class JournalOnDisk : public ::testing::Test {
protected:
    JournalOnDisk() : path(folder.Path("work.journal")) {
        base.script = "/here/script.json";
        base.setup = {{"mesh", "/here/cube.obj"}};
        base.source = "/here/cube.obj";
        base.content = {std::string(64, 'a'), 123};
        base.program = "trovik 0";
    }

    /// Writes a journal with every kind of record.
    void FillJournal() {
        Journal journal({path, false}, base);
        journal.BeginStep({{"tool", "Wax"}});
        journal.EndStep({}, "Stroke");
        journal.BeginStep({{"stroke", {{"surface", {{0, 0, 1}}}}}});
        journal.DabDone();
        journal.DabDone();
        journal.EndStep({0, 0, 41, 900}, "Wax");
        journal.Saved({"/here/saved.trovik", {std::string(64, 'b'), 77}});
        journal.BeginStroke({11, 3, 1, 0}, "Smooth");
        journal.Stamp({"/here/stamp.png", {std::string(64, 'c'), 9}});
        StrokeInput dab{};
        dab.face = 5;
        dab.flags = StrokeInput::keepsPosition;
        dab.hitPosition = {1.0f, 2.0f, 3.0f};
        dab.strength = 0.25f;
        journal.StrokeDab(dab);
        journal.RevertStroke();
        journal.WholeMesh({0.5f, 1});
        journal.EndStroke({0, 0, 7, 300}, "Smooth");
        journal.BeginStep({{"stroke", {{"surface", {{0, 0, 1}}}}}});
        journal.DabDone();
    }

    void Write(const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

    TemporaryFolder folder;
    std::string path;
    JournalBase base;
};

TEST_F(JournalOnDisk, ReadsBackTheWrittenRecords) {
    FillJournal();
    const JournalContent content = ReadJournal(path);
    EXPECT_TRUE(content.notes.empty());
    EXPECT_FALSE(content.isClosed);
    EXPECT_EQ(content.base.script, "/here/script.json");
    EXPECT_EQ(content.base.content, base.content);
    EXPECT_EQ(content.base.setup, base.setup);
    ASSERT_EQ(content.steps.size(), 4u);
    EXPECT_EQ(content.steps[0].step.at("tool"), "Wax");
    EXPECT_TRUE(content.steps[0].isOver);
    EXPECT_EQ(content.steps[1].dabs, 2u);
    EXPECT_EQ(content.steps[1].vertices, 41u);
    EXPECT_EQ(content.steps[1].undoBytes, 900u);
    ASSERT_EQ(content.saves.size(), 1u);
    EXPECT_EQ(content.saves[0].stepsBefore, 2u);
    EXPECT_EQ(content.saves[0].scene.path, "/here/saved.trovik");
    ASSERT_EQ(content.stamps.size(), 1u);
    EXPECT_EQ(content.stamps[0].content.bytes, 9u);
    const JournalStep& stroke = content.steps[2];
    EXPECT_TRUE(stroke.step.is_null());
    ASSERT_TRUE(stroke.start.has_value());
    EXPECT_EQ(stroke.start->seed, 11u);
    EXPECT_EQ(stroke.start->strokesBegun, 3u);
    EXPECT_EQ(stroke.start->modifier, 1u);
    ASSERT_EQ(stroke.calls.size(), 3u);
    EXPECT_EQ(stroke.calls[0].dab.face, 5u);
    EXPECT_EQ(stroke.calls[0].dab.flags, StrokeInput::keepsPosition);
    EXPECT_EQ(stroke.calls[0].dab.hitPosition[2], 3.0f);
    EXPECT_EQ(stroke.calls[1].kind, RecordKind::StrokeRevert);
    EXPECT_EQ(stroke.calls[2].whole.strength, 0.5f);
    EXPECT_EQ(stroke.dabs, 2u);
    EXPECT_TRUE(stroke.endsStroke);
    EXPECT_FALSE(content.steps[3].isOver);
    EXPECT_EQ(content.steps[3].dabs, 1u);
    const nlohmann::json line = SummaryOf(stroke);
    EXPECT_EQ(line.at("step"), "stroke Smooth");
    EXPECT_EQ(line.at("dabs"), 2);
    EXPECT_EQ(line.at("undoBytes"), 300);
    EXPECT_EQ(SummaryOf(content.steps[3]).at("finished"), false);
}

TEST_F(JournalOnDisk, KeepsAllCompleteRecordsAfterAnyTruncation) {
    FillJournal();
    const std::string whole = TemporaryFolder::Content(path);
    const JournalReader all(path);
    std::size_t lastCount = 0;
    for (std::size_t size = journalHeaderBytes; size <= whole.size(); ++size) {
        Write(whole.substr(0, size));
        const JournalReader reader(path);
        EXPECT_EQ(reader.Damage(), "") << size;
        std::size_t expected = 0;
        uint64_t end = journalHeaderBytes;
        for (const JournalRecord& record : all.Records()) {
            const uint64_t behind = record.byte + recordHeaderBytes + record.content.size();
            if (behind > size) break;
            ++expected;
            end = behind;
        }
        EXPECT_EQ(reader.Records().size(), expected) << size;
        EXPECT_GE(expected, lastCount);
        EXPECT_EQ(reader.TruncatedEnd().empty(), end == size) << size;
        lastCount = expected;
    }
    EXPECT_EQ(lastCount, all.Records().size());
}

TEST_F(JournalOnDisk, ReportsDamageWithFileByteAndReason) {
    FillJournal();
    const std::string whole = TemporaryFolder::Content(path);
    const JournalReader good(path);
    const auto& records = good.Records();
    const uint64_t last = records.back().byte;
    for (std::size_t place = 0; place < last; ++place) {
        std::string bytes = whole;
        bytes[place] = static_cast<char>(bytes[place] ^ 0x20);
        Write(bytes);
        const std::string message = MessageOf<HostError>([this] { ReadJournal(path); });
        ASSERT_EQ(message.rfind(path + ": byte ", 0), 0u) << place << ": " << message;
        if (place < journalHeaderBytes) continue;
        std::size_t index = 0;
        while (index + 1 < records.size() && records[index + 1].byte <= place) ++index;
        EXPECT_EQ(message.rfind(path + ": byte " + std::to_string(records[index].byte) +
                                    ": record " + std::to_string(index),
                                0),
                  0u)
            << message;
        EXPECT_NE(message.find("--until-damage"), std::string::npos);
        if (index == 0) continue;
        const JournalContent before = ReadJournal(path, true);
        ASSERT_EQ(before.notes.size(), 1u);
        EXPECT_LE(before.steps.size(), 4u);
        EXPECT_EQ(before.base.source, "/here/cube.obj");
    }
}

TEST_F(JournalOnDisk, DetectsARemovedRecord) {
    FillJournal();
    const JournalReader reader(path);
    const JournalRecord& gone = reader.Records()[3];
    std::string bytes = TemporaryFolder::Content(path);
    bytes.erase(gone.byte, recordHeaderBytes + gone.content.size());
    Write(bytes);
    const std::string message = MessageOf<HostError>([this] { ReadJournal(path); });
    EXPECT_NE(message.find("byte " + std::to_string(gone.byte) +
                           ": record 3 is missing; record 4 follows"),
              std::string::npos)
        << message;
}

TEST_F(JournalOnDisk, RefusesOtherFilesAndLaterVersions) {
    Write("");
    EXPECT_NE(MessageOf<HostError>([this] { ReadJournal(path); }).find("byte 0"),
              std::string::npos);
    Write(std::string(40, 'x'));
    EXPECT_NE(MessageOf<HostError>([this] { ReadJournal(path); }).find("not a journal"),
              std::string::npos);
    std::string later(journalMagic);
    later += std::string("\7\0\0\0", 4);
    const uint32_t checksum = Crc32(later.data(), later.size());
    Write(later + std::string(reinterpret_cast<const char*>(&checksum), sizeof checksum));
    EXPECT_NE(MessageOf<HostError>([this] { ReadJournal(path); }).find("version 7"),
              std::string::npos);
}

TEST_F(JournalOnDisk, UnfinishedJournalIsNotOverwritten) {
    FillJournal();
    const std::string before = TemporaryFolder::Content(path);
    const std::string message = MessageOf<HostError>([this] { Journal({path, false}, base); });
    EXPECT_NE(message.find(path), std::string::npos);
    EXPECT_NE(message.find("trovik recover"), std::string::npos) << message;
    EXPECT_EQ(TemporaryFolder::Content(path), before);
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST_F(JournalOnDisk, RefusesASecondRunDuringTheFirst) {
    const std::string reason =
        path + ": another run is writing this journal; wait until it ends, or choose another file";
    const auto start = [this] { Journal({path, false}, base); };
    {
        Journal first({path, false}, base);
        EXPECT_EQ(MessageOf<HostError>(start), reason);
        first.RestartFrom(base);
        EXPECT_EQ(MessageOf<HostError>(start), reason) << "the new journal must be locked too";
        first.BeginStep({{"tool", "Wax"}});
        EXPECT_EQ(folder.FileCount(), 1u);
    }
    // The lock was released when the run ended, but the journal was not closed.
    EXPECT_NE(MessageOf<HostError>(start).find("has not been closed"), std::string::npos);
}

TEST_F(JournalOnDisk, FileThatIsNotAJournalIsNotReplaced) {
    for (const char* content : {"notes of mine", "T", "TROVIK"}) {
        std::ofstream(path, std::ios::binary) << content;
        const std::string message = MessageOf<HostError>([this] { Journal({path, false}, base); });
        EXPECT_EQ(message == path + ": exists and is not a journal; choose another file",
                  std::string(content) == "notes of mine")
            << message;
        EXPECT_FALSE(message.empty());
        EXPECT_EQ(TemporaryFolder::Content(path), content);
    }
}

/// Starts a second journal immediately before the first is renamed to its final name.
class SecondRunIsFirst : public DiskCalls {
public:
    explicit SecondRunIsFirst(std::function<void()> startOther) : start(std::move(startOther)) {
        Use(this);
    }
    ~SecondRunIsFirst() override { Use(nullptr); }
    int Rename(const char* from, const char* to) override {
        StartOther();
        return DiskCalls::Rename(from, to);
    }
    int RenameNew(const char* from, const char* to) override {
        StartOther();
        return DiskCalls::RenameNew(from, to);
    }

private:
    void StartOther() {
        if (const auto once = std::exchange(start, nullptr)) once();
    }
    std::function<void()> start;
};

TEST_F(JournalOnDisk, OfTwoSimultaneousRunsOneIsRefused) {
    std::unique_ptr<Journal> other;
    {
        const SecondRunIsFirst disk([&] {
            other = std::make_unique<Journal>(JournalOptions{path, false}, base);
        });
        const std::string message = MessageOf<HostError>([this] { Journal({path, false}, base); });
        EXPECT_NE(message.find("another run is writing this journal"), std::string::npos)
            << message;
    }
    ASSERT_NE(other, nullptr);
    other->BeginStep({{"tool", "Wax"}});
    other->EndStep({}, "Stroke");
    other->Close();
    EXPECT_EQ(ReadJournal(path).steps.size(), 1u) << "another run must not replace it";
    // If there is already a closed journal, the first run holds its lock.
    {
        std::string message;
        const SecondRunIsFirst disk([&] {
            message = MessageOf<HostError>([this] { Journal({path, false}, base); });
        });
        const Journal first({path, false}, base);
        EXPECT_NE(message.find("another run is writing this journal"), std::string::npos)
            << message;
    }
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST_F(JournalOnDisk, ReplacesAClosedJournal) {
    { Journal({path, false}, base).Close(); }
    EXPECT_TRUE(ReadJournal(path).isClosed);
    Journal again({path, false}, base);
    EXPECT_FALSE(ReadJournal(path).isClosed);
}

TEST_F(JournalOnDisk, KeepsItsHistoryLinesAfterARestart) {
    Journal journal({path, false}, base);
    journal.BeginStep({{"tool", "Wax"}});
    journal.EndStep({}, "");
    JournalBase saved = base;
    saved.source = "/here/saved.trovik";
    journal.RestartFrom(saved);
    journal.BeginStep({{"undo", 1}});
    journal.EndStep({}, "");
    const JournalContent content = ReadJournal(path);
    EXPECT_EQ(content.base.source, "/here/saved.trovik");
    ASSERT_EQ(content.past.size(), 1u);
    EXPECT_EQ(content.past[0].at("step"), "tool Wax");
    ASSERT_EQ(content.steps.size(), 1u);
    EXPECT_EQ(SummaryOf(content.steps[0]).at("step"), "undo 1");
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST_F(JournalOnDisk, FullDiskEndsItWithAProblemAndCompleteRecords) {
    Journal journal({path, false}, base);
    {
        const FullDisk full(2000);
        for (int i = 0; i < 200; ++i) {
            journal.BeginStep({{"undo", 1}});
            journal.EndStep({}, "");
        }
    }
    EXPECT_FALSE(journal.IsAlive());
    const std::string problem = journal.TakeProblem();
    EXPECT_NE(problem.find("cannot write " + path + ": "), std::string::npos) << problem;
    EXPECT_EQ(problem.find('\n'), std::string::npos);
    EXPECT_EQ(journal.TakeProblem(), "");
    const JournalContent content = ReadJournal(path);
    EXPECT_GT(content.steps.size(), 5u);
    EXPECT_LT(content.steps.size(), 100u);
}

}  // namespace
}  // namespace trovik::test
