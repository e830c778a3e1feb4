#include "page.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace regstore {

namespace {

constexpr std::uint32_t kNodeHeaderSize = 8;
constexpr std::uint16_t kLargestKey = 511;

}  // namespace

bool Page::Read(int descriptor, std::uint64_t number) noexcept {
    std::size_t done = 0;
    while (done < bytes_.size()) {
        const auto offset = static_cast<off_t>(number * bytes_.size() + done);
        const ssize_t got = TEMP_FAILURE_RETRY(
            ::pread(descriptor, bytes_.data() + done, bytes_.size() - done, offset));
        if (got <= 0)
            return false;
        done += static_cast<std::size_t>(got);
    }
    return true;
}

bool Page::ParseNodes(std::vector<Node> *nodes) const {
    const std::string_view bytes = Bytes();
    const std::uint32_t lower = PageLower(bytes);
    const std::uint32_t upper = PageUpper(bytes);
    if (lower < kPageHeaderSize || lower % 2 != 0 || lower > upper || upper > bytes.size())
        return false;
    nodes->clear();
    std::vector<std::pair<std::uint32_t, std::uint32_t>> extents;
    for (std::uint32_t at = kPageHeaderSize; at < lower; at += 2) {
        const std::uint32_t offset = NumberAt<std::uint16_t>(bytes, at);
        std::uint32_t size = 0;
        Node node;
        if (offset < upper || offset % 2 != 0 ||
            !ParseNode(offset, Flags() == kBranchPage, &node, &size))
            return false;
        nodes->push_back(node);
        extents.emplace_back(offset, size);
    }
    std::sort(extents.begin(), extents.end());
    std::uint32_t end = upper;
    for (const auto &[offset, size] : extents) {
        if (offset != end)
            return false;
        end += size;
    }
    return end == bytes.size();
}

bool Page::ParseNode(std::uint32_t offset, bool branch, Node *node,
                     std::uint32_t *size) const noexcept {
    const std::string_view bytes = Bytes();
    if (offset + kNodeHeaderSize > bytes.size())
        return false;
    const std::uint64_t low = NumberAt<std::uint16_t>(bytes, offset);
    const std::uint64_t high = NumberAt<std::uint16_t>(bytes, offset + 2);
    const std::uint64_t flags = NumberAt<std::uint16_t>(bytes, offset + 4);
    const std::uint32_t key_size = NumberAt<std::uint16_t>(bytes, offset + 6);
    if (key_size > kLargestKey || (!branch && (flags & ~std::uint64_t{kBigData}) != 0))
        return false;
    node->big = !branch && flags == kBigData;
    node->data_size = static_cast<std::uint32_t>(low | high << 16U);
    const std::uint64_t content = branch ? 0 : node->big ? sizeof(std::uint64_t) : node->data_size;
    const std::uint64_t whole = kNodeHeaderSize + key_size + content;
    if (offset + whole > bytes.size())
        return false;
    node->key = bytes.substr(offset + kNodeHeaderSize, key_size);
    const std::uint32_t data = offset + kNodeHeaderSize + key_size;
    if (branch)
        node->child = low | high << 16U | flags << 32U;
    else if (node->big)
        node->child = NumberAt<std::uint64_t>(bytes, data);
    else
        node->data = bytes.substr(data, node->data_size);
    *size = static_cast<std::uint32_t>((whole + 1) & ~std::uint64_t{1});
    return true;
}

}  // namespace regstore
