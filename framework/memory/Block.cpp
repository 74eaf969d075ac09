// SPDX-License-Identifier: Apache-2.0
#include "host/Block.h"

#include "framework/memory/MemoryAccount.h"
#include "framework/memory/SystemMemory.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>
#include <map>
#include <string>

namespace trovik {

namespace {

constexpr int64_t unlimited = std::numeric_limits<int64_t>::max();

struct Account {
    int64_t total = 0;
    int64_t limit = unlimited;
    const char* allocator = nullptr;
    std::function<void(const std::string&)> sink;
};

// Never destroyed: stores with static lifetime release their bytes during program exit.
Account& TheAccount() {
    static auto* account = new Account;
    return *account;
}

/// Returns whether the log on standard error was requested.
bool IsLogWanted() {
    const char* wanted = std::getenv("TROVIK_MEMORY_LOG");
    return wanted != nullptr && *wanted != '\0';
}

void Log(const std::string& line) {
    const Account& account = TheAccount();
    if (account.sink)
        account.sink(line);
    else
        std::clog << line << '\n';
}

// The account stores only a single total, so the log contains the number of arrays for each name
// but not their size.
void WriteLog(float share, bool everyBlock) {
    const Account& account = TheAccount();
    std::map<std::string, int64_t> blocksByName;
    for (const Block* block = Block::s_pHead; block != nullptr; block = block->next)
        ++blocksByName[block->allocatorName == nullptr ? "unnamed" : block->allocatorName];
    Log("memory: " + std::to_string(account.total) + " bytes accounted" +
        (account.limit == unlimited ? std::string() : ", limit " + std::to_string(account.limit)) +
        (account.allocator == nullptr ? std::string()
                                      : std::string(", allocating for ") + account.allocator));
    int64_t blocks = 0;
    for (const auto& [name, count] : blocksByName) blocks += count;
    for (const auto& [name, count] : blocksByName) {
        if (everyBlock || static_cast<float>(count) >= share * static_cast<float>(blocks))
            Log("memory:   " + name + ": " + std::to_string(count) + " arrays");
    }
}

}  // namespace

Block* Block::s_pHead = nullptr;

Block::Block(const char* name, uint32_t size)
    : next(s_pHead), elementSize(size), allocatorName(name) {
    if (next != nullptr) next->previous = this;
    s_pHead = this;
}

Block::~Block() {
    if (previous != nullptr)
        previous->next = next;
    else
        s_pHead = next;
    if (next != nullptr) next->previous = previous;
}

bool Block::RegisterMemoryBlock(int64_t bytes) {
    Account& account = TheAccount();
    if (bytes > 0 && bytes > account.limit - account.total) return false;
    account.total += bytes;
    return true;
}

void Block::UnregisterMemoryBlock(int64_t bytes) { TheAccount().total -= bytes; }
void Block::SetAllocatorID(const char* name) { TheAccount().allocator = name; }

void Block::CopyMemoryBlock(void* to, const void* from, int64_t bytes) {
    // When an array grows, its elements are copied to new memory, which should use large pages.
    if (bytes > 0) PreferLargePages(to, static_cast<uint64_t>(bytes));
    if (bytes > 0) std::memcpy(to, from, static_cast<std::size_t>(bytes));
}

void* Block::AlignedAlloc(uint64_t size, uint64_t alignment) {
    const uint64_t rounded = (size + alignment - 1) / alignment * alignment;
    return std::aligned_alloc(alignment, rounded);
}

void Block::AlignedFree(void* memory) { std::free(memory); }

void Block::LogAll(float share, bool everyBlock) {
    if (!TheAccount().sink && !IsLogWanted()) return;
    try {
        WriteLog(share, everyBlock);
    } catch (const std::bad_alloc&) {
        // Called after a failed allocation, so logging must not throw another error.
    }
}

void MemoryAccount::SetLimit(int64_t bytes) { TheAccount().limit = bytes; }
int64_t MemoryAccount::Limit() { return TheAccount().limit; }
int64_t MemoryAccount::Total() { return TheAccount().total; }
void MemoryAccount::SetLogSink(std::function<void(const std::string&)> sink) {
    TheAccount().sink = std::move(sink);
}

}  // namespace trovik
