// The full-width characters of the half-width katakana.
#ifndef AGENT_KATAKANA_H
#define AGENT_KATAKANA_H

#include <array>
#include <cstdint>

namespace agent {

inline constexpr unsigned char kFirstKatakana = 0xA1;
inline constexpr unsigned char kLastKatakana = 0xDF;
inline constexpr unsigned char kVoicedMark = 0xDE;
inline constexpr unsigned char kSemiVoicedMark = 0xDF;

// A full-width character in Shift-JIS, alone and joined with either mark; 0 where Shift-JIS has no
// joined character.
struct Katakana {
    std::uint16_t plain;
    std::uint16_t voiced = 0;
    std::uint16_t semi_voiced = 0;
};

// From A1 (the ideographic full stop) to DF (the semi-voiced mark) in the order of JIS X 0201.
inline constexpr std::array<Katakana, kLastKatakana - kFirstKatakana + 1> kKatakana = {{
    {0x8142},                  // 。
    {0x8175},                  // 「
    {0x8176},                  // 」
    {0x8141},                  // 、
    {0x8145},                  // ・
    {0x8392},                  // ヲ
    {0x8340},                  // ァ
    {0x8342},                  // ィ
    {0x8344},                  // ゥ
    {0x8346},                  // ェ
    {0x8348},                  // ォ
    {0x8383},                  // ャ
    {0x8385},                  // ュ
    {0x8387},                  // ョ
    {0x8362},                  // ッ
    {0x815B},                  // ー
    {0x8341},                  // ア
    {0x8343},                  // イ
    {0x8345, 0x8394},          // ウヴ
    {0x8347},                  // エ
    {0x8349},                  // オ
    {0x834A, 0x834B},          // カガ
    {0x834C, 0x834D},          // キギ
    {0x834E, 0x834F},          // クグ
    {0x8350, 0x8351},          // ケゲ
    {0x8352, 0x8353},          // コゴ
    {0x8354, 0x8355},          // サザ
    {0x8356, 0x8357},          // シジ
    {0x8358, 0x8359},          // スズ
    {0x835A, 0x835B},          // セゼ
    {0x835C, 0x835D},          // ソゾ
    {0x835E, 0x835F},          // タダ
    {0x8360, 0x8361},          // チヂ
    {0x8363, 0x8364},          // ツヅ
    {0x8365, 0x8366},          // テデ
    {0x8367, 0x8368},          // トド
    {0x8369},                  // ナ
    {0x836A},                  // ニ
    {0x836B},                  // ヌ
    {0x836C},                  // ネ
    {0x836D},                  // ノ
    {0x836E, 0x836F, 0x8370},  // ハバパ
    {0x8371, 0x8372, 0x8373},  // ヒビピ
    {0x8374, 0x8375, 0x8376},  // フブプ
    {0x8377, 0x8378, 0x8379},  // ヘベペ
    {0x837A, 0x837B, 0x837C},  // ホボポ
    {0x837D},                  // マ
    {0x837E},                  // ミ
    {0x8380},                  // ム
    {0x8381},                  // メ
    {0x8382},                  // モ
    {0x8384},                  // ヤ
    {0x8386},                  // ユ
    {0x8388},                  // ヨ
    {0x8389},                  // ラ
    {0x838A},                  // リ
    {0x838B},                  // ル
    {0x838C},                  // レ
    {0x838D},                  // ロ
    {0x838F},                  // ワ
    {0x8393},                  // ン
    {0x814A},                  // ゛
    {0x814B},                  // ゜
}};

constexpr bool IsKatakana(unsigned char byte) {
    return byte >= kFirstKatakana && byte <= kLastKatakana;
}

}  // namespace agent

#endif  // AGENT_KATAKANA_H
