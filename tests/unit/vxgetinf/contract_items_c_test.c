/* The header alone, as C, and its data as a C program sees them. */
#include "velox/contract_items.h"

const char *ContractItemsSeenFromC(int nRow);

const char *ContractItemsSeenFromC(int nRow) {
    const VX_ITEM_TEXT *rows = VX_TEXT_SHOP;
    return rows == VX_TEXT_SHOP_en ? VX_REG_SHOP[nRow] : VX_TEXT_SHOP_jp[nRow];
}
