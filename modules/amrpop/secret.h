// A password: wiped when it goes, and kept out of everything that is shown.
#ifndef AMRPOP_SECRET_H
#define AMRPOP_SECRET_H

#include <string>
#include <string_view>
#include <vector>

namespace amrpop {

class Password {
  public:
    explicit Password(std::string_view text) : text_(text) {}
    Password(const Password &) = delete;
    Password &operator=(const Password &) = delete;
    ~Password();

    const char *Text() const noexcept { return text_.c_str(); }
    bool IsEmpty() const noexcept { return text_.empty(); }

  private:
    std::string text_;
};

// What of the log-in's lines people may see.
class Discretion {
  public:
    // Knows the forms in which the password goes over the line: as it stands, and in base64 alone
    // and together with the account.
    Discretion(std::string_view account, std::string_view password);
    Discretion(const Discretion &) = delete;
    Discretion &operator=(const Discretion &) = delete;
    ~Discretion();

    // Commands without their arguments; anything that is no command only as such.
    static std::string ShowCommand(std::string_view line);
    // An answer as it stands, unless it repeats one of the forms.
    std::string ShowAnswer(std::string_view line) const;

  private:
    std::vector<std::string> forms_;
};

}  // namespace amrpop

#endif  // AMRPOP_SECRET_H
