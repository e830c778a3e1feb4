#include "velox/contract_items.h"

// Each Japanese heading stands below its UTF-8 form, of which a test makes the EUC-JP bytes.
// The English dealer headings SE-CONTACT and SE-NAME label department and name in this order on
// purpose; a key disk names them the other way round.
const VX_ITEM_TEXT VX_REG_USER[VX_USER_VALUES + 1] = {
    "KAISHAKBN", "TOKUINMA", "TOKUINMN", "BUNMN",    "ZIPNO",    "ADRSNMA", "ADRSNMN", "SHOZAINMN",
    "BUTEL",     "MAIL",     "BUTANNMA", "BUTANNMN", "USERCODE", "COMMENT", "",
};

const VX_ITEM_TEXT VX_TEXT_USER_en[VX_USER_ITEMS + 1] = {
    "[USER-NAME]",
    "",
    "[USER-DIVISION]",
    "[USER-ZIPCODE]",
    "[USER-ADDRESS]",
    "",
    "",
    "[USER-TELNUM]",
    "[USER-EMAIL]",
    "[USER-CONTACT]",
    "",
    "[USER-SYSTEM-CD]",
    "[COMMENT]",
    "",
};

// clang-format off
const VX_ITEM_TEXT VX_TEXT_USER_jp[VX_USER_ITEMS + 1] = {
    // [お客様名称(カナ)]
    "[\xA4\xAA\xB5\xD2\xCD\xCD\xCC\xBE\xBE\xCE(\xA5\xAB\xA5\xCA)]",
    // [お客様名称(漢字)]
    "[\xA4\xAA\xB5\xD2\xCD\xCD\xCC\xBE\xBE\xCE(\xB4\xC1\xBB\xFA)]",
    // [部署名]
    "[\xC9\xF4\xBD\xF0\xCC\xBE]",
    // [お客様郵便番号]
    "[\xA4\xAA\xB5\xD2\xCD\xCD\xCD\xB9\xCA\xD8\xC8\xD6\xB9\xE6]",
    // [住所(カナ)]
    "[\xBD\xBB\xBD\xEA(\xA5\xAB\xA5\xCA)]",
    // [住所(漢字)]
    "[\xBD\xBB\xBD\xEA(\xB4\xC1\xBB\xFA)]",
    // [住所(詳細)]
    "[\xBD\xBB\xBD\xEA(\xBE\xDC\xBA\xD9)]",
    // [お客様電話番号]
    "[\xA4\xAA\xB5\xD2\xCD\xCD\xC5\xC5\xCF\xC3\xC8\xD6\xB9\xE6]",
    // [お客様メールアドレス]
    "[\xA4\xAA\xB5\xD2\xCD\xCD\xA5\xE1\xA1\xBC\xA5\xEB\xA5\xA2\xA5\xC9\xA5\xEC\xA5\xB9]",
    // [担当者名(カナ)]
    "[\xC3\xB4\xC5\xF6\xBC\xD4\xCC\xBE(\xA5\xAB\xA5\xCA)]",
    // [担当者名(漢字)]
    "[\xC3\xB4\xC5\xF6\xBC\xD4\xCC\xBE(\xB4\xC1\xBB\xFA)]",
    // [ユーザシステムコード]
    "[\xA5\xE6\xA1\xBC\xA5\xB6\xA5\xB7\xA5\xB9\xA5\xC6\xA5\xE0\xA5\xB3\xA1\xBC\xA5\xC9]",
    // [コメント]
    "[\xA5\xB3\xA5\xE1\xA5\xF3\xA5\xC8]",
    "",
};
// clang-format on

const VX_ITEM_TEXT VX_REG_MACHINE[VX_MACHINE_ITEMS + 1] = {
    "SYSNMN", "SOCHICD", "SYSGOKI", "GUARANTEE", "OSNMA", "OSREV", "",
};

const VX_ITEM_TEXT VX_TEXT_MACHINE_en[VX_MACHINE_ITEMS] = {
    "[SERVER-NAME]",      "[N-CODE]",  "[SERIAL-NUMBER]",
    "[GUARANTEE-NUMBER]", "[OS-NAME]", "[OS-VERSION]",
};

// clang-format off
const VX_ITEM_TEXT VX_TEXT_MACHINE_jp[VX_MACHINE_ITEMS] = {
    // [サーバ名称]
    "[\xA5\xB5\xA1\xBC\xA5\xD0\xCC\xBE\xBE\xCE]",
    // [装置コード]
    "[\xC1\xF5\xC3\xD6\xA5\xB3\xA1\xBC\xA5\xC9]",
    // [製造番号]
    "[\xC0\xBD\xC2\xA4\xC8\xD6\xB9\xE6]",
    // [保証書番号]
    "[\xCA\xDD\xBE\xDA\xBD\xF1\xC8\xD6\xB9\xE6]",
    // [OS名称]
    "[OS\xCC\xBE\xBE\xCE]",
    // [OS詳細バージョン]
    "[OS\xBE\xDC\xBA\xD9\xA5\xD0\xA1\xBC\xA5\xB8\xA5\xE7\xA5\xF3]",
};
// clang-format on

const VX_ITEM_TEXT VX_REG_OPTION[VX_OPTION_VALUES + 1] = {
    "OPTCDN",
    "OPTCD",
    "",
};

const VX_ITEM_TEXT VX_TEXT_OPTION_en[VX_OPTION_ITEMS + 1] = {
    "[SUB-N-CODE %02d]",
    "",
};

// clang-format off
const VX_ITEM_TEXT VX_TEXT_OPTION_jp[VX_OPTION_ITEMS + 1] = {
    // [装置コード %02d]
    "[\xC1\xF5\xC3\xD6\xA5\xB3\xA1\xBC\xA5\xC9 %02d]",
    "",
};
// clang-format on

const VX_ITEM_TEXT VX_REG_SHOP[VX_SHOP_ITEMS + 1] = {
    "SYSSHOPNMN", "SYSEIGYOBUNMN", "SYSEIGYONMN", "SYSEIGYOTEL",
    "SYSSEBU",    "SYSSENMN",      "SYSSETEL",    "",
};

const VX_ITEM_TEXT VX_TEXT_SHOP_en[VX_SHOP_ITEMS + 1] = {
    "[DEALER-NAME]",    "[DEALER-LOCAL-OFFICE]",
    "[DEALER-CONTACT]", "[DEALER-TEL-NUM]",
    "[SE-CONTACT]",     "[SE-NAME]",
    "[SE-TEL-NUMBER]",  "",
};

// clang-format off
const VX_ITEM_TEXT VX_TEXT_SHOP_jp[VX_SHOP_ITEMS + 1] = {
    // [販売店名]
    "[\xC8\xCE\xC7\xE4\xC5\xB9\xCC\xBE]",
    // [担当営業所属]
    "[\xC3\xB4\xC5\xF6\xB1\xC4\xB6\xC8\xBD\xEA\xC2\xB0]",
    // [担当営業氏名]
    "[\xC3\xB4\xC5\xF6\xB1\xC4\xB6\xC8\xBB\xE1\xCC\xBE]",
    // [担当営業電話番号]
    "[\xC3\xB4\xC5\xF6\xB1\xC4\xB6\xC8\xC5\xC5\xCF\xC3\xC8\xD6\xB9\xE6]",
    // [担当SE所属]
    "[\xC3\xB4\xC5\xF6SE\xBD\xEA\xC2\xB0]",
    // [担当SE氏名]
    "[\xC3\xB4\xC5\xF6SE\xBB\xE1\xCC\xBE]",
    // [担当SE電話番号]
    "[\xC3\xB4\xC5\xF6SE\xC5\xC5\xCF\xC3\xC8\xD6\xB9\xE6]",
    "",
};
// clang-format on

const VX_ITEM_TEXT *VX_TEXT_USER = VX_TEXT_USER_en;
const VX_ITEM_TEXT *VX_TEXT_MACHINE = VX_TEXT_MACHINE_en;
const VX_ITEM_TEXT *VX_TEXT_OPTION = VX_TEXT_OPTION_en;
const VX_ITEM_TEXT *VX_TEXT_SHOP = VX_TEXT_SHOP_en;
