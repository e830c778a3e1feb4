#include "regstore/tree_check.h"

#include <cinttypes>
#include <cstdio>
#include <optional>

#include <sys/stat.h>

#include "page.h"

namespace regstore {

namespace {

constexpr std::uint32_t kMagic = 0xBEEFC0DE;
constexpr std::uint32_t kDataVersion = 1;
constexpr std::uint16_t kIntegerKeys = 0x08;
constexpr std::uint64_t kNoPage = ~std::uint64_t{0};
constexpr std::uint64_t kLargestFile = std::uint64_t{64} << 30;
constexpr std::uint16_t kDeepestTree = 31;
constexpr std::uint32_t kFirstHeadSize = 4096;
constexpr std::uint64_t kHeadPages = 2;

std::string AtPage(std::uint64_t page, const char *fault) {
    char text[120];
    std::snprintf(text, sizeof text, "page %" PRIu64 " %s", page, fault);
    return text;
}

TreeHead ParseTree(std::string_view bytes, std::size_t at) noexcept {
    return {NumberAt<std::uint32_t>(bytes, at),      NumberAt<std::uint16_t>(bytes, at + 4),
            NumberAt<std::uint16_t>(bytes, at + 6),  NumberAt<std::uint64_t>(bytes, at + 8),
            NumberAt<std::uint64_t>(bytes, at + 16), NumberAt<std::uint64_t>(bytes, at + 24),
            NumberAt<std::uint64_t>(bytes, at + 32), NumberAt<std::uint64_t>(bytes, at + 40)};
}

bool IsTree(const TreeHead &tree) noexcept {
    return tree.depth <= kDeepestTree && (tree.root == kNoPage) == (tree.depth == 0) &&
           (tree.root != kNoPage || tree.entries == 0);
}

// A head page as LMDB writes it for an environment without names, duplicates or a fixed address.
bool ParseHead(const Page &page, std::uint64_t number, Head *head) noexcept {
    constexpr std::size_t kStart = kPageHeaderSize;
    const std::string_view bytes = page.Bytes();
    head->free = ParseTree(bytes, kStart + 24);
    head->main = ParseTree(bytes, kStart + 72);
    head->last_page = NumberAt<std::uint64_t>(bytes, kStart + 120);
    head->transaction = NumberAt<std::uint64_t>(bytes, kStart + 128);
    return page.Number() == number && page.Flags() == kHeadPage &&
           NumberAt<std::uint32_t>(bytes, kStart) == kMagic &&
           NumberAt<std::uint32_t>(bytes, kStart + 4) == kDataVersion &&
           NumberAt<std::uint64_t>(bytes, kStart + 8) == 0 && head->free.flags == kIntegerKeys &&
           head->main.flags == 0 && head->main.pad == 0 && IsTree(head->free) &&
           IsTree(head->main) && head->last_page + 1 >= kHeadPages;
}

bool IsPageSize(std::uint32_t size) noexcept {
    return size >= 512 && size <= 32768 && (size & (size - 1)) == 0;
}

// Walks one file. `used_` has a mark for every page that was met.
class TreeCheck {
  public:
    TreeCheck(int descriptor, const Heads &heads)
        : descriptor_(descriptor), heads_(heads), used_(heads.current.last_page + 1) {}

    bool Run(RecordVisitor *visitor, std::string *damage);

  private:
    // The keys that a page may hold: from `low` (none: no bound) to before `high`.
    struct Bounds {
        std::optional<std::string> low;
        std::optional<std::string> high;
    };
    // One of the two trees, while it is walked.
    struct Walk {
        const TreeHead &head;
        bool integer_keys;
        RecordVisitor *visitor;
        std::uint64_t branch_pages = 0;
        std::uint64_t leaf_pages = 0;
        std::uint64_t overflow_pages = 0;
        std::uint64_t entries = 0;
    };

    bool Fail(std::string fault) {
        damage_ = std::move(fault);
        return false;
    }
    bool WalkTree(const TreeHead &head, bool integer_keys, RecordVisitor *visitor);
    bool WalkPage(Walk &walk, std::uint64_t number, std::uint16_t level, const Bounds &bounds);
    bool WalkBranch(Walk &walk, std::uint16_t level, const std::vector<Node> &nodes,
                    const Bounds &bounds);
    bool WalkLeaf(Walk &walk, const std::vector<Node> &nodes);
    bool CheckOrder(const Walk &walk, std::uint64_t number, bool branch,
                    const std::vector<Node> &nodes, const Bounds &bounds);
    bool Take(std::uint64_t number);
    bool ReadOverflow(Walk &walk, const Node &node, std::string *data);
    bool TakeFreePages(std::string_view key, std::string_view list);
    bool CheckEnd();

    // The order of the tree's keys.
    static int Compare(const Walk &walk, std::string_view left, std::string_view right) noexcept;

    int descriptor_;
    const Heads &heads_;
    std::vector<bool> used_;
    std::string damage_;

    friend class FreeList;
};

// Hands the lists of free pages, which are the records of their own tree, to the check.
class FreeList : public RecordVisitor {
  public:
    explicit FreeList(TreeCheck *check) noexcept : check_(check) {}
    bool Visit(std::string_view key, std::string_view bytes, std::string *damage) override {
        if (check_->TakeFreePages(key, bytes))
            return true;
        *damage = "the list of free pages is not well formed, or holds a page that is in use";
        return false;
    }

  private:
    TreeCheck *check_;
};

int TreeCheck::Compare(const Walk &walk, std::string_view left, std::string_view right) noexcept {
    if (!walk.integer_keys)
        return left.compare(right);
    const auto first = NumberAt<std::uint64_t>(left, 0);
    const auto second = NumberAt<std::uint64_t>(right, 0);
    return first < second ? -1 : static_cast<int>(first > second);
}

bool TreeCheck::Run(RecordVisitor *visitor, std::string *damage) {
    FreeList free_list(this);
    const bool sound = WalkTree(heads_.current.main, false, visitor) &&
                       WalkTree(heads_.current.free, true, &free_list) && CheckEnd();
    *damage = damage_;
    return sound;
}

bool TreeCheck::WalkTree(const TreeHead &head, bool integer_keys, RecordVisitor *visitor) {
    Walk walk{head, integer_keys, visitor};
    if (head.root != kNoPage && !WalkPage(walk, head.root, 1, {}))
        return false;
    if (walk.branch_pages != head.branch_pages || walk.leaf_pages != head.leaf_pages ||
        walk.overflow_pages != head.overflow_pages || walk.entries != head.entries)
        return Fail("the head page's counts are not those of its tree");
    return true;
}

bool TreeCheck::WalkPage(Walk &walk, std::uint64_t number, std::uint16_t level,
                         const Bounds &bounds) {
    Page page(heads_.page_size);
    if (!Take(number))
        return Fail(AtPage(number, "is met twice or lies past the store's last page"));
    if (!page.Read(descriptor_, number))
        return Fail(AtPage(number, "is missing: the file is too short or cannot be read"));
    const bool branch = level < walk.head.depth;
    if (page.Number() != number || page.Flags() != (branch ? kBranchPage : kLeafPage))
        return Fail(AtPage(number, "is not the page that its place in the tree needs"));
    std::vector<Node> nodes;
    // LMDB itself insists on two entries in a branch page, but for the list of free pages.
    const std::size_t fewest = branch && !walk.integer_keys ? 2 : 1;
    if (!page.ParseNodes(&nodes) || nodes.size() < fewest)
        return Fail(AtPage(number, "has entries that are not well formed"));
    if (!CheckOrder(walk, number, branch, nodes, bounds))
        return false;
    ++(branch ? walk.branch_pages : walk.leaf_pages);
    return branch ? WalkBranch(walk, level, nodes, bounds) : WalkLeaf(walk, nodes);
}

bool TreeCheck::CheckOrder(const Walk &walk, std::uint64_t number, bool branch,
                           const std::vector<Node> &nodes, const Bounds &bounds) {
    const std::string_view *previous = nullptr;
    std::string_view low;
    if (bounds.low.has_value())
        low = *bounds.low;
    // The first key of a branch page is not used; its subtree begins where the page does.
    for (std::size_t i = branch ? 1 : 0; i < nodes.size(); ++i) {
        const std::string_view &key = nodes[i].key;
        if (key.empty() || (walk.integer_keys && key.size() != sizeof(std::uint64_t)))
            return Fail(AtPage(number, "has a key of the wrong size"));
        const bool ordered = previous != nullptr
                                 ? Compare(walk, *previous, key) < 0
                                 : !bounds.low.has_value() || Compare(walk, low, key) <= 0;
        if (!ordered)
            return Fail(AtPage(number, "has keys that are out of order"));
        previous = &key;
    }
    if (previous != nullptr && bounds.high.has_value() &&
        Compare(walk, *previous, *bounds.high) >= 0)
        return Fail(AtPage(number, "has keys that belong on a later page"));
    return true;
}

bool TreeCheck::WalkBranch(Walk &walk, std::uint16_t level, const std::vector<Node> &nodes,
                           const Bounds &bounds) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        Bounds inner = bounds;
        if (i > 0)
            inner.low = std::string(nodes[i].key);
        if (i + 1 < nodes.size())
            inner.high = std::string(nodes[i + 1].key);
        if (!WalkPage(walk, nodes[i].child, static_cast<std::uint16_t>(level + 1), inner))
            return false;
    }
    return true;
}

bool TreeCheck::WalkLeaf(Walk &walk, const std::vector<Node> &nodes) {
    std::string big;
    for (const Node &node : nodes) {
        if (node.big && !ReadOverflow(walk, node, &big))
            return false;
        ++walk.entries;
        if (!walk.visitor->Visit(node.key, node.big ? std::string_view(big) : node.data, &damage_))
            return false;
    }
    return true;
}

// Marks a page as used: once, and not one of the heads.
bool TreeCheck::Take(std::uint64_t number) {
    if (number < kHeadPages || number >= used_.size() || used_[number])
        return false;
    used_[number] = true;
    return true;
}

bool TreeCheck::ReadOverflow(Walk &walk, const Node &node, std::string *data) {
    const std::uint64_t pages =
        (kPageHeaderSize + std::uint64_t{node.data_size} + heads_.page_size - 1) / heads_.page_size;
    Page page(heads_.page_size);
    data->clear();
    for (std::uint64_t i = 0; i < pages; ++i) {
        const std::uint64_t number = node.child + i;
        if (!Take(number))
            return Fail(AtPage(number, "is met twice or lies past the store's last page"));
        if (!page.Read(descriptor_, number))
            return Fail(AtPage(number, "is missing: the file is too short or cannot be read"));
        if (i == 0 &&
            (page.Number() != number || page.Flags() != kOverflowPage || page.RunLength() != pages))
            return Fail(AtPage(number, "does not begin the large record that it should"));
        data->append(page.Bytes().substr(i == 0 ? kPageHeaderSize : 0));
    }
    data->resize(node.data_size);
    walk.overflow_pages += pages;
    return true;
}

// One list: its length, then page numbers that fall.
bool TreeCheck::TakeFreePages(std::string_view key, std::string_view list) {
    constexpr std::size_t kWidth = sizeof(std::uint64_t);
    const auto transaction = NumberAt<std::uint64_t>(key, 0);
    if (transaction == 0 || transaction > heads_.current.transaction || list.size() < kWidth)
        return false;
    const auto count = NumberAt<std::uint64_t>(list, 0);
    if (count > list.size() / kWidth - 1)
        return false;
    std::uint64_t previous = kNoPage;
    for (std::uint64_t i = 1; i <= count; ++i) {
        const auto number = NumberAt<std::uint64_t>(list, i * kWidth);
        if (number >= previous || !Take(number))
            return false;
        previous = number;
    }
    return true;
}

// Past the file's end there may be pages that were given up before they were ever written; they are
// on the list of free pages.
bool TreeCheck::CheckEnd() {
    struct stat file = {};
    if (::fstat(descriptor_, &file) != 0)
        return Fail("the file's size cannot be read");
    for (std::uint64_t number = static_cast<std::uint64_t>(file.st_size) / heads_.page_size;
         number < used_.size(); ++number) {
        if (number >= kHeadPages && !used_[number])
            return Fail("the file is shorter than its head page says");
    }
    return true;
}

}  // namespace

bool ReadHeads(int descriptor, Heads *heads, std::string *damage) {
    Page first(kFirstHeadSize);
    Head head[kHeadPages];
    if (!first.Read(descriptor, 0) || !ParseHead(first, 0, &head[0]) ||
        !IsPageSize(head[0].free.pad)) {
        *damage = "page 0 is no head page of a store";
        return false;
    }
    Page second(head[0].free.pad);
    if (!second.Read(descriptor, 1) || !ParseHead(second, 1, &head[1]) ||
        head[1].free.pad != head[0].free.pad) {
        *damage = "page 1 is no head page of a store";
        return false;
    }
    // Commits write the heads in turn: even numbers into the first, odd ones into the second.
    const std::uint64_t newest = head[0].transaction > head[1].transaction ? 0 : 1;
    if (head[newest].transaction % kHeadPages != newest ||
        head[newest].transaction != head[1 - newest].transaction + 1) {
        *damage = "the head pages' numbers do not follow each other";
        return false;
    }
    if (head[newest].last_page >= kLargestFile / head[0].free.pad) {
        *damage = "the head page tells of more pages than a store can have";
        return false;
    }
    *heads = {head[0].free.pad, head[newest]};
    return true;
}

bool CheckTrees(int descriptor, const Heads &heads, RecordVisitor *visitor, std::string *damage) {
    return TreeCheck(descriptor, heads).Run(visitor, damage);
}

}  // namespace regstore
