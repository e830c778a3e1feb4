/*
 * The item tables of the contract data: registry value names and the headings under which the
 * service information text shows their values.
 *
 * Conventions
 *  1. The values stand in the key "SOFTWARE\XEV\VLXService\SETTING" below HKEY_LOCAL_MACHINE. They
 *     are texts (REG_SZ, EUC-JP), but for the numbers "KAISHAKBN" and "OPTCDN" (REG_DWORD).
 *  2. A table is an array of texts of 24 bytes each that ends with an empty row; the two heading
 *     tables of the machine have no such row. Empty English headings stand in the middle of a
 *     table, so that tables are walked by their counts.
 *  3. Tables ending in _en are English (ASCII), tables ending in _jp Japanese (EUC-JP).
 *  4. The four pointers VX_TEXT_* select the headings' language. GetVlxServiceInfo and
 *     GetVlxServiceInfo_Mail set them at each call; before the first they are English.
 *  5. Thread safety: the tables are constant; the pointers are set without synchronisation.
 */
#ifndef VELOX_CONTRACT_ITEMS_H
#define VELOX_CONTRACT_ITEMS_H

#include <assert.h>
#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef char VX_ITEM_TEXT[24];

static_assert(sizeof(VX_ITEM_TEXT) == 24, "a row has 24 bytes");

#define VX_USER_VALUES 14  /* customer values: the kind, then the items */
#define VX_USER_ITEMS 13   /* customer items: heading i is that of value i + 1 */
#define VX_MACHINE_ITEMS 6 /* heading i is that of value i */
#define VX_OPTION_VALUES 2 /* the count's name and the beginning of an option's name */
#define VX_OPTION_ITEMS 1  /* one heading, a printf format of the option's number */
#define VX_SHOP_ITEMS 7    /* dealer items: heading i is that of value i */

/* Rows of the tables that code names. */
#define VX_REG_USER_KIND 0       /* "KAISHAKBN": 1 corporate, 99 personal */
#define VX_REG_MACHINE_PRODUCT 1 /* "SOCHICD" */
#define VX_REG_OPTION_COUNT 0    /* "OPTCDN" */
#define VX_REG_OPTION_CODE 1     /* "OPTCD", followed by the number in at least two digits */

NTWIN32_API extern const VX_ITEM_TEXT VX_REG_USER[VX_USER_VALUES + 1];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_USER_en[VX_USER_ITEMS + 1];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_USER_jp[VX_USER_ITEMS + 1];

NTWIN32_API extern const VX_ITEM_TEXT VX_REG_MACHINE[VX_MACHINE_ITEMS + 1];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_MACHINE_en[VX_MACHINE_ITEMS];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_MACHINE_jp[VX_MACHINE_ITEMS];

NTWIN32_API extern const VX_ITEM_TEXT VX_REG_OPTION[VX_OPTION_VALUES + 1];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_OPTION_en[VX_OPTION_ITEMS + 1];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_OPTION_jp[VX_OPTION_ITEMS + 1];

NTWIN32_API extern const VX_ITEM_TEXT VX_REG_SHOP[VX_SHOP_ITEMS + 1];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_SHOP_en[VX_SHOP_ITEMS + 1];
NTWIN32_API extern const VX_ITEM_TEXT VX_TEXT_SHOP_jp[VX_SHOP_ITEMS + 1];

/* The headings in the language of the last service information text (convention 4). */
NTWIN32_API extern const VX_ITEM_TEXT *VX_TEXT_USER;
NTWIN32_API extern const VX_ITEM_TEXT *VX_TEXT_MACHINE;
NTWIN32_API extern const VX_ITEM_TEXT *VX_TEXT_OPTION;
NTWIN32_API extern const VX_ITEM_TEXT *VX_TEXT_SHOP;

#ifdef __cplusplus
}
#endif

#endif
