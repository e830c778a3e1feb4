// One page of an LMDB 0.9 data file: its bytes, and what they say, with every bound checked.
#ifndef REGSTORE_PAGE_H
#define REGSTORE_PAGE_H

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace regstore {

inline constexpr std::uint16_t kBranchPage = 0x01;
inline constexpr std::uint16_t kLeafPage = 0x02;
inline constexpr std::uint16_t kOverflowPage = 0x04;
inline constexpr std::uint16_t kHeadPage = 0x08;
inline constexpr std::uint32_t kPageHeaderSize = 16;
inline constexpr std::uint16_t kBigData = 0x01;  // a node whose data stand on overflow pages

// A number at an offset that the caller has checked.
template <typename Number>
Number NumberAt(std::string_view bytes, std::size_t offset) noexcept {
    Number number;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

// Where the entries of a branch or leaf page are: their offsets end at `lower`, they begin at
// `upper` and reach to the end of the page.
inline std::uint16_t PageLower(std::string_view page) noexcept {
    return NumberAt<std::uint16_t>(page, 12);
}
inline std::uint16_t PageUpper(std::string_view page) noexcept {
    return NumberAt<std::uint16_t>(page, 14);
}

// One entry of a branch or leaf page.
struct Node {
    std::string_view key;
    std::uint64_t child = 0;      // branch: page of the subtree
    std::uint32_t data_size = 0;  // leaf
    bool big = false;             // leaf: `child` is the first overflow page
    std::string_view data;        // leaf, when not big
};

class Page {
  public:
    explicit Page(std::uint32_t size) : bytes_(size) {}

    // Reads page `number` of a file; false when the file does not hold it whole.
    bool Read(int descriptor, std::uint64_t number) noexcept;

    std::string_view Bytes() const noexcept { return {bytes_.data(), bytes_.size()}; }
    std::uint64_t Number() const noexcept { return NumberAt<std::uint64_t>(Bytes(), 0); }
    std::uint16_t Flags() const noexcept { return NumberAt<std::uint16_t>(Bytes(), 10); }
    // Of an overflow page: how many pages the run has.
    std::uint32_t RunLength() const noexcept { return NumberAt<std::uint32_t>(Bytes(), 12); }

    // Takes a branch or leaf page apart; false when its entries are not well formed: they fill the
    // end of the page without gap or overlap.
    bool ParseNodes(std::vector<Node> *nodes) const;

  private:
    bool ParseNode(std::uint32_t offset, bool branch, Node *node,
                   std::uint32_t *size) const noexcept;

    std::vector<char> bytes_;
};

}  // namespace regstore

#endif  // REGSTORE_PAGE_H
