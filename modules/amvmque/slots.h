// The 23 slots of a queue item, taken out of the caller's memory.
#ifndef AMVMQUE_SLOTS_H
#define AMVMQUE_SLOTS_H

#include <queuestore/entry.h>
#include <records/queue_item.h>

#include <string>

// Copies an item, of each number the low 32 bits. False with *problem filled when a text is null or
// has no end within AMQUE_MAX_TEXT bytes, or a block is null or larger than AMQUE_MAX_DATA.
bool CopySlots(const AMQUE_ITEM &slots, queuestore::Item *item, std::string *problem);

#endif  // AMVMQUE_SLOTS_H
