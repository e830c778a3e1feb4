// The settings of internet mail, as they stand under the mail base key.
#ifndef VELOXCTL_MAIL_SETTINGS_H
#define VELOXCTL_MAIL_SETTINGS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace veloxctl::mail {

// Registry value names.
inline constexpr char kServer[] = "Server";
inline constexpr char kAddress[] = "IP";
inline constexpr char kSender[] = "Address";
inline constexpr char kPort[] = "SMTPPort";
inline constexpr char kOption[] = "Option";
inline constexpr char kPopFlag[] = "POPFlag";
inline constexpr char kPopPort[] = "POPPort";
inline constexpr char kPopServer[] = "POPServer";
inline constexpr char kPopUser[] = "POPUser";
inline constexpr char kPopPassword[] = "POPPass";
inline constexpr char kPopWait[] = "POPTime";

// Texts are as stored; what is missing holds nothing.
struct Settings {
    std::optional<std::string> server;
    std::optional<std::string> address;
    std::optional<std::string> sender;
    std::optional<std::uint32_t> port;
    std::optional<std::uint32_t> option;
    std::optional<std::uint32_t> pop_flag;
    std::optional<std::uint32_t> pop_port;
    std::optional<std::string> pop_server;
    std::optional<std::string> pop_user;
    std::optional<std::string> pop_password;  // encoded
    std::optional<std::uint32_t> pop_wait;
};

// The path of the mail base key.
std::string BasePath();

Settings ReadSettings(const std::string &path);

bool WantsPop(const Settings &settings);

// What the bits of an option word ask for, by the names that "mail set" takes.
inline constexpr const char *kProtections[] = {"plain", "tls", "starttls", "offered"};
const char *ProtectionOf(std::uint32_t option);
bool VerifiesCertificate(std::uint32_t option);

// The same as a clause.
const char *DescribeProtection(std::uint32_t option);

// What is known of the stored password without showing it.
enum class PasswordState { kMissing, kStored, kUseless };
PasswordState StateOfPassword(const Settings &settings);

// What keeps a report from going out, or lets it go out otherwise than one would think; one clause
// each, in UTF-8.
std::vector<std::string> Problems(const Settings &settings);

// Those of them that make the POP log-in fail.
std::vector<std::string> PopProblems(const Settings &settings);

}  // namespace veloxctl::mail

#endif  // VELOXCTL_MAIL_SETTINGS_H
