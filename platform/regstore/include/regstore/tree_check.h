// The structure of an LMDB 0.9 data file, read with nothing but pread().
#ifndef REGSTORE_TREE_CHECK_H
#define REGSTORE_TREE_CHECK_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace regstore {

// A tree as a head page describes it.
struct TreeHead {
    std::uint32_t pad = 0;
    std::uint16_t flags = 0;
    std::uint16_t depth = 0;
    std::uint64_t branch_pages = 0;
    std::uint64_t leaf_pages = 0;
    std::uint64_t overflow_pages = 0;
    std::uint64_t entries = 0;
    std::uint64_t root = 0;
};

// One of the two head pages of a file ("meta pages"), which take turns.
struct Head {
    TreeHead free;  // the tree that lists free pages
    TreeHead main;
    std::uint64_t last_page = 0;
    std::uint64_t transaction = 0;
};

// What both head pages say at one moment: which one rules, and the page size.
struct Heads {
    std::uint32_t page_size = 0;
    Head current;
};

// Reads and checks the two head pages; false with *damage when they do not make a store.
bool ReadHeads(int descriptor, Heads *heads, std::string *damage);

// Takes the records of a store in the order of their keys. False ends the walk as damage.
class RecordVisitor {
  public:
    virtual ~RecordVisitor() = default;
    virtual bool Visit(std::string_view key, std::string_view bytes, std::string *damage) = 0;
};

// Walks both trees and the list of free pages; false with *damage at the first fault.
bool CheckTrees(int descriptor, const Heads &heads, RecordVisitor *visitor, std::string *damage);

}  // namespace regstore

#endif  // REGSTORE_TREE_CHECK_H
