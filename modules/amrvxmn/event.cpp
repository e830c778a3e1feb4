#include "event.h"

#include <ntwin32/registry.h>
#include <ntwin32/system.h>
#include <sodium.h>
#include <velox/registry_access.h>
#include <velox/service_info.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>

#include "failure.h"
#include "text.h"

namespace amrvxmn {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kReportKey[] = "SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT";
constexpr char kReportProduct[] = "ReportProduct";
constexpr DWORD kMaxProduct = 512;
constexpr DWORD kMaxComputerName = 257;
constexpr std::size_t kMaxId = 255;

[[noreturn]] void Refuse(const std::string &reason) {
    throw Failure(Result::kNotPrepared, reason);
}

// The product's name as it is stored.
std::string ReadProduct() {
    std::array<BYTE, kMaxProduct + 1> text{};
    DWORD type = REG_SZ;
    DWORD size = kMaxProduct;
    if (AMAMRegReadEx(HKEY_LOCAL_MACHINE, kReportKey, kReportProduct, &type, &size, text.data()) ==
            FALSE ||
        text[0] == '\0')
        Refuse("the registry names no product whose opening is reported");
    return reinterpret_cast<const char *>(text.data());
}

std::string ReadComputerName() {
    std::array<char, kMaxComputerName + 1> name{};
    DWORD size = kMaxComputerName;
    if (GetComputerName(name.data(), &size) == FALSE)
        Refuse("this computer's name cannot be read");
    return name.data();
}

std::string ReadServiceInformation() {
    struct Free {
        void operator()(char *block) const noexcept { std::free(block); }
    };
    char *text = nullptr;
    DWORD length = 0;
    if (GetVlxServiceInfo(&text, &length) == FALSE)
        Refuse("the service information cannot be read");
    const std::unique_ptr<char, Free> owner(text);
    return {text, length};
}

bool IsUnreserved(char byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || (byte != '\0' && std::strchr("-._~", byte) != nullptr);
}

// The host as an URI reference.
std::string SourceOf(std::string_view host) {
    std::string source = "/hosts/";
    for (const char byte : host) {
        std::array<char, 4> escape{};
        std::snprintf(escape.data(), escape.size(), "%%%02X", static_cast<unsigned char>(byte));
        source += IsUnreserved(byte) ? std::string(1, byte) : escape.data();
    }
    return source;
}

// A time as RFC 3339 writes it.
std::string TimeText(std::time_t time) {
    std::tm parts{};
    if (::gmtime_r(&time, &parts) == nullptr)
        Refuse("the time is beyond every calendar");
    std::array<char, 64> text{};
    const std::size_t length =
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return {text.data(), length};
}

// The first 128 bits of a hash over the texts, each with its length.
std::string HashOf(std::initializer_list<std::string_view> texts) {
    if (::sodium_init() < 0)
        Refuse("the hash library cannot be initialised");
    std::array<unsigned char, crypto_generichash_BYTES_MIN> hash{};
    crypto_generichash_state state{};
    ::crypto_generichash_init(&state, nullptr, 0, hash.size());
    for (const std::string_view text : texts) {
        const std::string length = std::to_string(text.size()) + ":";
        for (const std::string_view part : {std::string_view(length), text})
            ::crypto_generichash_update(
                &state, reinterpret_cast<const unsigned char *>(part.data()), part.size());
    }
    ::crypto_generichash_final(&state, hash.data(), hash.size());
    std::string digits(2 * hash.size() + 1, '\0');
    ::sodium_bin2hex(digits.data(), digits.size(), hash.data(), hash.size());
    digits.pop_back();
    return digits;
}

// What every event tells; texts in UTF-8.
struct Context {
    std::string id;
    const char *type;
    std::string host;
    std::string subject;
    std::time_t time;
};

Event MakeEvent(const Context &context, Json data, const std::string &service_information) {
    data["host"] = context.host;
    data["service_information"] = ToUtf8(service_information);
    const Json event = {{"specversion", "1.0"},
                        {"id", context.id},
                        {"source", SourceOf(context.host)},
                        {"type", context.type},
                        {"subject", context.subject},
                        {"time", TimeText(context.time)},
                        {"datacontenttype", "application/json"},
                        {"data", std::move(data)}};
    return {context.id, event.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

bool IsIdentifier(std::string_view text) {
    return !text.empty() && text.size() <= kMaxId &&
           std::ranges::all_of(text, [](char byte) { return byte > 0x20 && byte < 0x7F; });
}

void ExpectTexts(const VLX_MANAGER_ALERT &alert) {
    for (const char *text : {alert.lpszEventId, alert.lpszLog, alert.lpszSource, alert.lpszComputer,
                             alert.lpszMessage, alert.lpszLines})
        if (text == nullptr)
            Refuse("a text of the alert is null");
    if (!IsIdentifier(alert.lpszEventId))
        Refuse("the alert's id is not of 1 to 255 printable characters without blanks");
}

}  // namespace

Event MakeOpeningEvent() {
    constexpr char kType[] = "velox.report.opening";
    const std::string product = ReadProduct();
    const std::string host = ToUtf8(ReadComputerName());
    const std::string service_information = ReadServiceInformation();
    const std::string id = HashOf({kType, host, product, service_information});
    const std::string subject = ToUtf8(product);
    return MakeEvent({id, kType, host, subject, std::time(nullptr)}, {{"product", subject}},
                     service_information);
}

Event MakeAlertEvent(const VLX_MANAGER_ALERT &alert) {
    ExpectTexts(alert);
    const std::string source = ToUtf8(alert.lpszSource);
    return MakeEvent({alert.lpszEventId, "velox.report.alert", ToUtf8(alert.lpszComputer), source,
                      static_cast<std::time_t>(alert.qwTime)},
                     {{"log", ToUtf8(alert.lpszLog)},
                      {"source", source},
                      {"level", alert.dwLevel},
                      {"count", alert.dwCount},
                      {"message", ToUtf8(alert.lpszMessage)},
                      {"lines", ToUtf8(alert.lpszLines)}},
                     ReadServiceInformation());
}

}  // namespace amrvxmn
