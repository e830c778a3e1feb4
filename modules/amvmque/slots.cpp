#include "slots.h"

#include <cstring>

namespace {

std::uint32_t Number(std::uint64_t slot) {
    return static_cast<std::uint32_t>(slot);
}

// Copies slots and keeps the first that cannot be copied as the problem.
class Copier {
  public:
    explicit Copier(std::string *problem) : problem_(problem) {}

    bool Ok() const { return ok_; }

    void Text(int slot, const char *text, std::string *copy) {
        if (text == nullptr) {
            Fail(slot, "is null");
            return;
        }
        const std::size_t length = strnlen(text, AMQUE_MAX_TEXT);
        if (length == AMQUE_MAX_TEXT) {
            Fail(slot, "has no end within 16384 bytes");
            return;
        }
        copy->assign(text, length);
    }

    void Block(int slot, const void *block, std::uint64_t size_slot, std::string *copy) {
        const std::uint32_t size = Number(size_slot);
        if (size > AMQUE_MAX_DATA) {
            Fail(slot, "has more than 65536 bytes");
        } else if (size > 0 && block == nullptr) {
            Fail(slot, "is null");
        } else if (size > 0) {
            copy->assign(static_cast<const char *>(block), size);
        }
    }

  private:
    void Fail(int slot, const char *cause) {
        if (ok_) {
            *problem_ = "slot " + std::to_string(slot) + " of the item " + cause;
            ok_ = false;
        }
    }

    std::string *problem_;
    bool ok_ = true;
};

}  // namespace

bool CopySlots(const AMQUE_ITEM &slots, queuestore::Item *item, std::string *problem) {
    Copier copier(problem);
    item->kind = Number(slots.qwKind);
    copier.Text(2, slots.lpszLog, &item->log);
    copier.Text(3, slots.lpszSource, &item->source);
    item->level = Number(slots.qwLevel);
    item->root = slots.qwRoot;
    copier.Text(6, slots.lpszDestination, &item->destination);
    item->time = Number(slots.qwTime);
    copier.Text(8, slots.lpszComputer, &item->computer);
    copier.Text(9, slots.lpszMessage, &item->message);
    copier.Text(10, slots.lpszReporter, &item->reporter);
    item->report_level = Number(slots.qwReportLevel);
    copier.Block(12, slots.lpData, slots.qwDataSize, &item->data);
    copier.Block(14, slots.lpExtra, slots.qwExtraSize, &item->extra);
    for (std::size_t i = 0; i < item->texts.size(); ++i) {
        copier.Text(16 + static_cast<int>(i), slots.lpszText[i], &item->texts[i]);
    }
    item->count = Number(slots.qwCount);
    item->flags = Number(slots.qwFlags);
    item->context = slots.qwContext;
    copier.Text(23, slots.lpszNote, &item->note);
    return copier.Ok();
}
