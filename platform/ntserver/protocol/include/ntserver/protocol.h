// The protocol between KESntserver and its clients: a Unix stream socket with frames in both
// directions.
//
//  operation        asked for by                        answer after the status
//  kHello           every connection, first; alone in   HelloAnswer
//                   CheckNTserverReady
//  kOpenKey         RegOpenKeyEx                         KeyAnswer
//  kCreateKey       RegCreateKeyEx, RegCreateKey         CreateKeyAnswer        changes
//  kQueryValue      RegQueryValueEx                      ValueAnswer
//  kSetValue        RegSetValueEx                        -                      changes
//  kEnumKey         RegEnumKeyEx                         EnumKeyAnswer
//  kEnumValue       RegEnumValue                         EnumValueAnswer
//  kQueryKey        RegQueryInfoKey                      QueryKeyAnswer
//  kDeleteKey       RegDeleteKey                         -                      changes
//  kDeleteValue     RegDeleteValue                       -                      changes
//  kBatchChanges    KesRegApplyBatch, its changes        none                   changes
//  kBatchCommit     KesRegApplyBatch, its end            BatchAnswer            changes
//  kQueryServer     KesRegQueryServer                    ServerAnswer
//  kVerify          KesRegVerify                         VerifyAnswer
//
// Rules
//  1. A frame is a header (payload size 4 bytes, operation 2, tag 2) and the payload. Numbers are
//     little-endian. A payload has at most kMaxPayload bytes.
//  2. The answer's header repeats operation and tag of the request; its payload begins with a
//  status
//     (4 bytes, a result code of the registry). Only kBatchCommit is answered with more than a
//     status when the status is not 0. A client has one request under way at a time.
//  3. The first request is kHello with the magic and the client's protocol version. A daemon that
//     does not speak that version answers with a status and ends the connection.
//  4. A batch is a run of kBatchChanges frames, which are not answered, closed by kBatchCommit.
//     Nothing but these two may stand inside the run. What a connection that ends leaves is
//     dropped.
//  5. Who sends a frame that is malformed, too large, out of place or too slow loses the
//  connection.
//     The daemon may also end a connection that rests: a client opens another when it next needs
//     one.
#ifndef NTSERVER_PROTOCOL_H
#define NTSERVER_PROTOCOL_H

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace ntserver {

inline constexpr char kSocketName[] = "ntserver.sock";  // in the run folder
inline constexpr std::uint32_t kMagic = 0x5253454BU;    // "KESR"
inline constexpr std::uint32_t kProtocolVersion = 1;

enum class Operation : std::uint16_t {
    kHello = 1,
    kOpenKey = 2,
    kCreateKey = 3,
    kQueryValue = 4,
    kSetValue = 5,
    kEnumKey = 6,
    kEnumValue = 7,
    kQueryKey = 8,
    kDeleteKey = 9,
    kDeleteValue = 10,
    kBatchChanges = 11,
    kBatchCommit = 12,
    kQueryServer = 13,
    kVerify = 14,
};

inline constexpr std::size_t kHeaderSize = 8;
// The largest data (1 MiB), the longest path, and room for names and numbers.
inline constexpr std::size_t kMaxPayload = 0x100000 + 0x20000 + 0x1000;
// A batch's changes are kept in memory until its end.
inline constexpr std::size_t kMaxBatchBytes = std::size_t{512} << 20;

// The daemon's patience: with the first exchange, with the rest of a frame that has begun, and with
// a client that does not take its answer.
inline constexpr std::chrono::milliseconds kHandshakeLimit{5000};
inline constexpr std::chrono::milliseconds kFrameLimit{10000};

// The client's patience.
inline constexpr std::chrono::milliseconds kReadyLimit{2000};  // connect and hello
inline constexpr std::chrono::milliseconds kCallLimit{30000};
inline constexpr std::chrono::milliseconds kBatchLimit{300000};
inline constexpr std::chrono::milliseconds kVerifyLimit{600000};

}  // namespace ntserver

#endif  // NTSERVER_PROTOCOL_H
