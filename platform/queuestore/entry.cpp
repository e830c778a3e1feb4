#include <queuestore/entry.h>
#include <regfile/text.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

namespace queuestore {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kHexDigits[] = "0123456789abcdef";

// "20240305T005320.123456Z-0123456789abcdef", a digit of either kind for each 0 and x.
constexpr std::string_view kIdForm = "00000000T000000.000000Z-xxxxxxxxxxxxxxxx";
constexpr std::size_t kLongestComputer = 200;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f');
}

bool IsDomainCharacter(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '.';
}

// A name of labels with a dot between them.
bool IsDomainName(std::string_view name) {
    return !name.empty() && name.size() <= kLongestComputer &&
           std::all_of(name.begin(), name.end(), IsDomainCharacter) && name.front() != '.' &&
           name.back() != '.' && name.find("..") == std::string_view::npos;
}

std::string ToUtf8(const std::string &stored) {
    std::string utf8;
    return regfile::StoredToUtf8(stored, &utf8) ? utf8 : regfile::NameToUtf8(stored);
}

std::string ToHex(const std::string &bytes) {
    std::string hex;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kHexDigits[byte >> 4];
        hex += kHexDigits[byte & 0xF];
    }
    return hex;
}

unsigned HexValue(char digit) {
    return static_cast<unsigned>(IsDigit(digit) ? digit - '0' : digit - 'a' + 10);
}

// Reads the members of one object; the first that is missing or of the wrong kind is the problem.
class Reader {
  public:
    Reader(const Json &object, std::string path, std::string *problem)
        : object_(object), path_(std::move(path)), problem_(problem) {}

    bool Ok() const { return ok_; }

    const Json *Member(const char *name, Json::value_t kind) {
        const auto found = object_.find(name);
        if (found == object_.end()) {
            Fail(name, "is missing");
            return nullptr;
        }
        if (found->type() != kind) {
            Fail(name, "is of the wrong type");
            return nullptr;
        }
        return &*found;
    }

    void Number(const char *name, std::uint32_t *number) {
        std::uint64_t wide = 0;
        Number(name, &wide);
        if (wide > UINT32_MAX) {
            Fail(name, "is out of range");
        }
        *number = static_cast<std::uint32_t>(wide);
    }

    void Number(const char *name, std::uint64_t *number) {
        if (const Json *member = Member(name, Json::value_t::number_unsigned)) {
            *number = member->get<std::uint64_t>();
        }
    }

    void Time(const char *name, std::int64_t *time) {
        std::uint64_t wide = 0;
        Number(name, &wide);
        if (wide > INT64_MAX) {
            Fail(name, "is out of range");
        }
        *time = static_cast<std::int64_t>(wide);
    }

    void Unicode(const char *name, std::string *text) {
        if (const Json *member = Member(name, Json::value_t::string)) {
            *text = member->get_ref<const std::string &>();
        }
    }

    // A text of the item. A zero byte would end it elsewhere.
    void Text(const char *name, std::string *stored) {
        if (const Json *member = Member(name, Json::value_t::string)) {
            Convert(name, *member, stored);
        }
    }

    void Texts(const char *name, std::array<std::string, 4> *texts) {
        const Json *member = Member(name, Json::value_t::array);
        if (member == nullptr) {
            return;
        }
        if (member->size() != texts->size()) {
            Fail(name, "has not 4 texts");
            return;
        }
        for (std::size_t i = 0; i < texts->size(); ++i) {
            if (!(*member)[i].is_string()) {
                Fail(name, "is of the wrong type");
                return;
            }
            Convert(name, (*member)[i], &(*texts)[i]);
        }
    }

    void Bytes(const char *name, std::string *bytes) {
        std::string hex;
        Unicode(name, &hex);
        if (hex.size() % 2 != 0 || !std::all_of(hex.begin(), hex.end(), IsHexDigit)) {
            Fail(name, "is no list of hexadecimal bytes");
            return;
        }
        bytes->clear();
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            bytes->push_back(static_cast<char>(HexValue(hex[i]) << 4 | HexValue(hex[i + 1])));
        }
    }

    void Fail(const char *name, const char *cause) {
        if (ok_) {
            *problem_ = "\"" + path_ + name + "\" " + cause;
            ok_ = false;
        }
    }

  private:
    void Convert(const char *name, const Json &text, std::string *stored) {
        const auto &utf8 = text.get_ref<const std::string &>();
        stored->clear();
        if (utf8.find('\0') != std::string::npos || !regfile::Utf8ToName(utf8, stored) ||
            stored->find('\0') != std::string::npos) {
            Fail(name, "has a character that EUC-JP lacks");
        }
    }

    const Json &object_;
    std::string path_;
    std::string *problem_;
    bool ok_ = true;
};

Json ItemToJson(const Item &item) {
    Json texts = Json::array();
    for (const std::string &text : item.texts) {
        texts.push_back(ToUtf8(text));
    }
    return {{"kind", item.kind},
            {"log", ToUtf8(item.log)},
            {"source", ToUtf8(item.source)},
            {"level", item.level},
            {"root", item.root},
            {"destination", ToUtf8(item.destination)},
            {"time", item.time},
            {"computer", ToUtf8(item.computer)},
            {"message", ToUtf8(item.message)},
            {"reporter", ToUtf8(item.reporter)},
            {"report_level", item.report_level},
            {"data", ToHex(item.data)},
            {"extra", ToHex(item.extra)},
            {"texts", texts},
            {"count", item.count},
            {"flags", item.flags},
            {"context", item.context},
            {"note", ToUtf8(item.note)}};
}

bool ReadItem(const Json &object, Item *item, std::string *problem) {
    Reader reader(object, "item.", problem);
    reader.Number("kind", &item->kind);
    reader.Text("log", &item->log);
    reader.Text("source", &item->source);
    reader.Number("level", &item->level);
    reader.Number("root", &item->root);
    reader.Text("destination", &item->destination);
    reader.Number("time", &item->time);
    reader.Text("computer", &item->computer);
    reader.Text("message", &item->message);
    reader.Text("reporter", &item->reporter);
    reader.Number("report_level", &item->report_level);
    reader.Bytes("data", &item->data);
    reader.Bytes("extra", &item->extra);
    reader.Texts("texts", &item->texts);
    reader.Number("count", &item->count);
    reader.Number("flags", &item->flags);
    reader.Number("context", &item->context);
    reader.Text("note", &item->note);
    return reader.Ok();
}

bool ReadDelivery(const Json &object, Delivery *delivery, std::string *problem) {
    Reader reader(object, "delivery.", problem);
    reader.Number("tries", &delivery->tries);
    reader.Time("last_try", &delivery->last_try);
    reader.Time("next_try", &delivery->next_try);
    reader.Unicode("reason", &delivery->reason);
    return reader.Ok();
}

// Printable ASCII without blanks in angle brackets: nothing that could end a mail's header.
bool IsMessageId(std::string_view text) {
    constexpr std::size_t kLongest = 250;
    return text.size() > 2 && text.size() <= kLongest && text.front() == '<' &&
           text.back() == '>' && std::all_of(text.begin() + 1, text.end() - 1, [](char c) {
               return c > ' ' && c < '\x7F' && c != '<' && c != '>';
           });
}

}  // namespace

std::string NewId() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc = {};
    gmtime_r(&now.tv_sec, &utc);
    std::uint64_t random = 0;
    if (getrandom(&random, sizeof random, 0) != static_cast<ssize_t>(sizeof random)) {
        random =
            static_cast<std::uint64_t>(now.tv_nsec) << 32 | static_cast<std::uint32_t>(getpid());
    }
    char date[32] = {};
    (void)std::strftime(date, sizeof date, "%Y%m%dT%H%M%S", &utc);
    char id[128] = {};
    (void)std::snprintf(id, sizeof id, "%s.%06ldZ-%016" PRIx64, date, now.tv_nsec / 1000, random);
    return id;
}

bool IsId(std::string_view text) {
    return text.size() == kIdForm.size() &&
           std::equal(text.begin(), text.end(), kIdForm.begin(), [](char c, char form) {
               return form == '0' ? IsDigit(c) : form == 'x' ? IsHexDigit(c) : c == form;
           });
}

std::string MessageIdOf(std::string_view id, std::string_view computer) {
    std::string message_id = "<";
    return message_id.append(id).append("@").append(IsDomainName(computer) ? computer
                                                                           : "localhost") +
           ">";
}

std::string Format(const Entry &entry) {
    const Json document = {{"format", kFormat},
                           {"id", entry.id},
                           {"message_id", entry.message_id},
                           {"queued", entry.queued},
                           {"item", ItemToJson(entry.item)},
                           {"delivery",
                            {{"tries", entry.delivery.tries},
                             {"last_try", entry.delivery.last_try},
                             {"next_try", entry.delivery.next_try},
                             {"reason", entry.delivery.reason}}}};
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool Parse(std::string_view bytes, Entry *entry, std::string *problem) {
    if (bytes.size() > kMaxFileSize) {
        *problem = "it has more than 2 MiB";
        return false;
    }
    const Json document = Json::parse(bytes, nullptr, false);
    if (!document.is_object()) {
        *problem = "it is no JSON object";
        return false;
    }
    Reader reader(document, "", problem);
    std::uint32_t format = 0;
    reader.Number("format", &format);
    if (format != kFormat) {
        reader.Fail("format", "is none that is known");
    }
    reader.Unicode("id", &entry->id);
    if (!IsId(entry->id)) {
        reader.Fail("id", "has not the form of an id");
    }
    reader.Unicode("message_id", &entry->message_id);
    if (!IsMessageId(entry->message_id)) {
        reader.Fail("message_id", "has not the form of a message id");
    }
    reader.Time("queued", &entry->queued);
    const Json *item = reader.Member("item", Json::value_t::object);
    const Json *delivery = reader.Member("delivery", Json::value_t::object);
    return reader.Ok() && ReadItem(*item, &entry->item, problem) &&
           ReadDelivery(*delivery, &entry->delivery, problem);
}

}  // namespace queuestore
