// What a power cut can leave of a store, on any file system.
//
// The operations of a real store are recorded, and every state of the disk is built that a power
// cut after any of them may leave: of what has not been synced, any part may have reached the disk,
// in any combination. A load of each state must give the old preset or the new one.

#include "engine/preset_backup.h"
#include "engine/preset_file.h"
#include "support/file_recorder.h"
#include "support/log_recorder.h"
#include "support/preset_lines.h"
#include "support/temp_folder.h"
#include "text/line_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace morvane {
namespace {

using Lines = std::vector<std::string>;

const KeySet keys({"gain[1]", "mode"});
const Lines oldEntries{"gain[1]=old", "mode=old"};
const Lines newEntries{"gain[1]=new", "mode=new"};
const Lines newestEntries{"gain[1]=newest", "mode=newest"};

std::string textOf(const Lines& lines) {
    std::string text;
    for (const auto& line : lines)
        text += line + "\n";
    return text;
}

/// The names in the folder and what their files hold.
using Disk = std::map<std::string, std::string>;

constexpr const char* newFile = "\1"; ///< stands for whatever of the new file has reached the disk

void writeTo(const test::TempFolder& folder, const Disk& disk) {
    for (const auto& [name, content] : disk)
        folder.write(name, content);
}

// The calls of a store on such a disk.
std::vector<std::string> recordStore(const Disk& disk) {
    const test::TempFolder folder;
    writeTo(folder, disk);
    const auto path = folder.path("p");
    const test::FileRecorder files;
    std::FILE* stream = nullptr;
    EXPECT_TRUE(openPresetForWrite(path, stream));
    EXPECT_EQ(writePresetFile(stream, keys, std::vector{"new", "new"}), 2);
    EXPECT_TRUE(closePresetAfterWrite(path, stream));
    auto calls = files.calls();
    for (auto& call : calls) {
        if (call.starts_with("fsync ") && call != "fsync p")
            call = "fsync .";
    }
    return calls;
}

// The ways in which one operation on the folder may have reached the disk.
std::vector<Disk> outcomesOf(const std::string& call, const Disk& disk) {
    std::vector<Disk> outcomes{disk};
    Disk done = disk;
    if (call == "rename p p_bak") {
        const auto file = done.find("p");
        if (file == done.end())
            return outcomes;
        done["p_bak"] = file->second;
        outcomes.push_back(done); // the new name is there and the old one not yet gone
        done.erase("p");
    } else if (call == "open p") {
        done["p"] = newFile;
    } else if (call == "remove p_bak") {
        done.erase("p_bak");
    }
    outcomes.push_back(done);
    return outcomes;
}

/// What the folder's operations may have left on the disk after the first `count` calls of a store.
std::set<Disk> foldersBehind(const Disk& start, const std::vector<std::string>& calls,
                             std::size_t count) {
    Disk live = start; // what the running system sees
    std::set<Disk> disks{live};
    for (std::size_t i = 0; i < count; ++i) {
        if (calls[i] == "fsync .")
            disks = {live};
        live = outcomesOf(calls[i], live).back();
        std::set<Disk> next;
        for (const auto& disk : disks) {
            for (const auto& outcome : outcomesOf(calls[i], disk))
                next.insert(outcome);
        }
        disks = next;
    }
    return disks;
}

/// Everything that may be on the disk after the first `count` calls of a store of `entries`.
std::set<Disk> disksBehind(const Disk& start, const std::vector<std::string>& calls,
                           std::size_t count, const Lines& entries) {
    const auto text = textOf(entries);
    std::vector<std::string> contents{text};
    const auto behind = calls.begin() + static_cast<std::ptrdiff_t>(count);
    if (std::find(calls.begin(), behind, "fsync p") == behind)
        contents.insert(contents.end(),
                        {"", text.substr(0, 5), text.substr(0, text.size() - 1),
                         entries.front() + "\n", std::string(text.size(), '\0'), "mode=\xff\n"});
    std::set<Disk> filled;
    for (const auto& disk : foldersBehind(start, calls, count)) {
        for (const auto& content : contents) {
            Disk copy = disk;
            for (auto& [name, file] : copy) {
                if (file == newFile)
                    file = content;
            }
            filled.insert(copy);
        }
    }
    return filled;
}

/// Everything that a power cut can leave of a store of `entries` on such a disk.
std::set<Disk> disksOfAnInterruptedStore(const Disk& start, const Lines& entries) {
    const auto calls = recordStore(start);
    std::set<Disk> disks;
    for (std::size_t count = 0; count <= calls.size(); ++count)
        disks.merge(disksBehind(start, calls, count, entries));
    return disks;
}

// What a load reads from a disk; nothing if there is no file.
std::optional<Lines> loadFrom(const Disk& disk) {
    const test::TempFolder folder;
    writeTo(folder, disk);
    std::FILE* raw = nullptr;
    if (!openPresetForRead(folder.path("p"), raw) || raw == nullptr)
        return std::nullopt;
    const OwnedStream stream(raw);
    return test::readLines(stream.get());
}

const Disk oldDisk{{"p", textOf(oldEntries)}};

TEST(PowerCut, LeavesTheOldOrTheNewPreset) {
    const auto calls = recordStore(oldDisk);
    std::size_t states = 0;
    for (std::size_t count = 0; count <= calls.size(); ++count) {
        for (const auto& disk : disksBehind(oldDisk, calls, count, newEntries)) {
            SCOPED_TRACE("after " + std::to_string(count) +
                         " calls: " + testing::PrintToString(disk));
            const auto entries = loadFrom(disk);
            EXPECT_TRUE(entries == oldEntries || entries == newEntries)
                << testing::PrintToString(entries.has_value());
            ++states;
        }
    }
    const auto disks = disksBehind(oldDisk, calls, calls.size(), newEntries);
    EXPECT_EQ(loadFrom(*disks.begin()), newEntries);
    EXPECT_EQ(disks.size(), 1U) << "nothing is left to chance";
    EXPECT_EQ(states, 21U) << "all that this order of the steps allows";
    test::takeLog();
}

// A store that follows an interrupted one is just as safe, once a load has put the backup back.
TEST(PowerCut, LeavesACompletePresetOfASecondStoreBehindALoad) {
    for (const auto& first : disksOfAnInterruptedStore(oldDisk, newEntries)) {
        const auto loaded = *loadFrom(first);
        const Disk recovered{{"p", textOf(loaded)}};
        for (const auto& disk : disksOfAnInterruptedStore(recovered, newestEntries)) {
            const auto entries = loadFrom(disk);
            EXPECT_TRUE(entries == loaded || entries == newestEntries)
                << testing::PrintToString(first) << " and then " << testing::PrintToString(disk);
        }
    }
    test::takeLog();
}

// Without a load the second store makes the half-written file its backup, in the place of the last
// complete one. It is safe if it is not interrupted as well.
TEST(PowerCut, MayLeaveNoCompletePresetOfTwoInterruptedStores) {
    bool isLost = false;
    for (const auto& first : disksOfAnInterruptedStore(oldDisk, newEntries)) {
        SCOPED_TRACE(testing::PrintToString(first));
        const auto file = first.find("p");
        const bool isHalf = first.contains("p_bak") && file != first.end() &&
                            file->second != textOf(oldEntries) &&
                            file->second != textOf(newEntries);
        for (const auto& disk : disksOfAnInterruptedStore(first, newestEntries)) {
            const auto entries = loadFrom(disk);
            const bool isComplete =
                entries == oldEntries || entries == newEntries || entries == newestEntries;
            EXPECT_TRUE(isComplete || isHalf) << testing::PrintToString(disk);
            isLost = isLost || !isComplete;
        }
        const auto calls = recordStore(first);
        for (const auto& disk : disksBehind(first, calls, calls.size(), newestEntries))
            EXPECT_EQ(loadFrom(disk), newestEntries);
    }
    EXPECT_TRUE(isLost);
    test::takeLog();
}

struct Sync {
    const char* why;
    std::size_t position; ///< among the calls of a store
};

// Each sync is needed: without it there is a state that is neither old nor new.
constexpr Sync syncs[] = {
    {"the rename", 1},
    {"the new file", 3},
    {"the name of the new file", 5},
};

TEST(PowerCut, WouldLoseThePresetWithoutAnyOfTheSyncs) {
    const auto calls = recordStore(oldDisk);
    ASSERT_EQ(calls, (std::vector<std::string>{"rename p p_bak", "fsync .", "open p", "fsync p",
                                               "fclose p", "fsync .", "remove p_bak", "fsync ."}));
    for (const auto& [why, position] : syncs) {
        auto without = calls;
        without.erase(without.begin() + static_cast<std::ptrdiff_t>(position));
        bool isLost = false;
        for (std::size_t count = 0; count <= without.size(); ++count) {
            for (const auto& disk : disksBehind(oldDisk, without, count, newEntries)) {
                const auto entries = loadFrom(disk);
                isLost = isLost || (entries != oldEntries && entries != newEntries);
            }
        }
        EXPECT_TRUE(isLost) << why;
    }
    auto withoutLast = calls;
    withoutLast.pop_back();
    EXPECT_GT(disksBehind(oldDisk, withoutLast, withoutLast.size(), newEntries).size(), 1U)
        << "the client would be told of a preset that may be gone";
    test::takeLog();
}

} // namespace
} // namespace morvane
