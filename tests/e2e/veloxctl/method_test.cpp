// "veloxctl method" and "veloxctl manager".
#include "manager_case.h"

namespace veloxctl_test {
namespace {

using testing::HasSubstr;

struct Row {
    const char *title;
    std::string key;  // with value: what stands there before
    std::string value;
    std::vector<std::string> words;
    int status;
    std::string output;
    std::string errors;
    std::string read;   // the key that is read afterwards
    std::string after;  // its values
};

void PrintTo(const Row &row, std::ostream *out) {
    *out << row.title;
}

class MethodTest : public ManagerCommandTest, public testing::WithParamInterface<Row> {};

TEST_P(MethodTest, SaysAndStores) {
    const Row &row = GetParam();
    if (!row.key.empty()) {
        Put(row.key, row.value);
    }
    const Result result = Veloxctl(row.words);
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(result.errors, row.errors);
    if (!row.read.empty()) {
        EXPECT_EQ(Values(row.read), row.after);
    }
}

constexpr char kMail[] = "\"SelectedMethod\"=\"Internet Mail\"\n";

const Row kMethodRows[] = {
    {"Shows",
     "",
     "",
     {"method", "show"},
     EX_OK,
     "method:  mail\nsetup:   0\nopening: 0\n",
     "",
     "",
     ""},
    {"ShowsInAnyCase",
     kMethodKey,
     "\"SelectedMethod\"=\"TRANSTOMANAGER\"",
     {"method", "show", "--json"},
     EX_OK,
     "{\n  \"method\": \"manager\",\n  \"setup\": 0,\n  \"opening\": 0\n}\n",
     "",
     "",
     ""},
    {"ShowsStates",
     kDestination,
     "\"EOpening\"=dword:00000002",
     {"method", "show"},
     EX_OK,
     "method:  mail\nsetup:   0\nopening: 2\n",
     "",
     "",
     ""},
    {"TellsWhatIsNoMethod",
     kMethodKey,
     "\"SelectedMethod\"=\"Dialup\"",
     {"method", "show"},
     EX_CONFIG,
     "",
     "veloxctl: the report method is \"Dialup\", which is no method; select one with \"veloxctl "
     "method set\"\n",
     "",
     ""},
    {"TellsThatNoneIsStored",
     kMethodKey,
     "\"SelectedMethod\"=-",
     {"method", "show"},
     EX_CONFIG,
     "",
     "veloxctl: the report method is missing; select one with \"veloxctl method set\"\n",
     "",
     ""},
    {"SetsManager",
     "",
     "",
     {"method", "set", "manager"},
     EX_OK,
     "report: method: mail -> manager\n",
     "",
     kMethodKey,
     "\"SelectedMethod\"=\"TransToManager\"\n"},
    {"SetsDialUp",
     "",
     "",
     {"method", "set", "dial-up"},
     EX_OK,
     "report: method: mail -> dial-up\n",
     "",
     kMethodKey,
     "\"SelectedMethod\"=\"Dial-up\"\n"},
    {"SetsMail",
     kMethodKey,
     "\"SelectedMethod\"=\"Dial-up\"",
     {"method", "set", "mail"},
     EX_OK,
     "report: method: dial-up -> mail\n",
     "",
     kMethodKey,
     kMail},
    {"SetsWhereNoneWas",
     kMethodKey,
     "\"SelectedMethod\"=-",
     {"method", "set", "mail", "--json"},
     EX_OK,
     "{\n  \"name\": \"report\",\n  \"changes\": [\n    {\n      \"setting\": \"method\",\n"
     "      \"before\": \"none\",\n      \"after\": \"mail\"\n    }\n  ]\n}\n",
     "",
     kMethodKey,
     kMail},
    {"SetsTheSame",
     "",
     "",
     {"method", "set", "mail"},
     EX_OK,
     "report: nothing changed\n",
     "",
     kMethodKey,
     kMail},
    {"SetsNoOther",
     "",
     "",
     {"method", "set", "fax"},
     EX_USAGE,
     "",
     "veloxctl: method set: \"fax\" is no method; there are mail, dial-up and manager\n",
     kMethodKey,
     kMail},
    {"ResetsNothing", "", "", {"method", "reset"}, EX_OK, "report: nothing changed\n", "", "", ""},
    {"ResetsTheOpening",
     kDestination,
     "\"EOpening\"=dword:00000002",
     {"method", "reset"},
     EX_OK,
     "report: opening: 2 -> 0\n",
     "",
     kDestination,
     "\"ETo\"=\"centre@maintenance.example\"\n\"EOpening\"=dword:00000000\n"},
    {"ResetsTheSetUp",
     kSetupKey,
     "\"SETTING\"=dword:00000001",
     {"method", "reset"},
     EX_OK,
     "report: setup: 1 -> 0\n",
     "",
     "",
     ""},
    {"ResetNeedsTheSetUpState",
     kSetupKey,
     "\"SETTING\"=-",
     {"method", "reset"},
     EX_CONFIG,
     "",
     "veloxctl: SETTING of HKEY_LOCAL_MACHINE\\SOFTWARE\\XEV\\VLXService\\SETUP is missing\n",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Method, MethodTest, testing::ValuesIn(kMethodRows), test_support::Title());

std::string Stored(const std::string &address, const std::string &host, const std::string &port) {
    return "\"ETo\"=\"centre@maintenance.example\"\n\"EOpening\"=dword:00000000\n\"ManagerIP\"=\"" +
           address + "\"\n\"IPorHost\"=\"" + host + "\"\n\"PortNumber\"=dword:0000" + port +
           "\n\"Comment\"=\"" + host + "\"\n";
}

constexpr char kUnchanged[] =
    "\"ETo\"=\"centre@maintenance.example\"\n\"EOpening\"=dword:00000000\n";
constexpr char kLongAddress[] = "2001:0db8:0000:0000:0000:0000:0000:0001";

const Row kManagerRows[] = {
    {"ShowsNone",
     "",
     "",
     {"manager", "show"},
     EX_OK,
     "host:    (empty)\naddress: 0.0.0.0\nport:    31136\n",
     "",
     kDestination,
     kUnchanged},
    {"ShowsNoneAsJson",
     "",
     "",
     {"manager", "show", "--json"},
     EX_OK,
     "{\n  \"host\": \"\",\n  \"address\": \"0.0.0.0\",\n  \"port\": 31136,\n  \"url\": null\n}\n",
     "",
     "",
     ""},
    {"ShowsADroppedHost",
     kDestination,
     "\"IPorHost\"=\"m.example\"",
     {"manager", "show"},
     EX_OK,
     "host:    (empty)\naddress: 0.0.0.0\nport:    31136\n",
     "veloxctl: the stored host m.example counts for nothing, because the address is 0.0.0.0; set "
     "the host again\n",
     "",
     ""},
    {"ShowsTheUrlOfAHost",
     kDestination,
     "\"ManagerIP\"=\"10.0.0.1\"\n\"IPorHost\"=\"https://m.example\"\n\"PortNumber\"=dword:1bb",
     {"manager", "show"},
     EX_OK,
     "host:    https://m.example\naddress: 10.0.0.1\nport:    443\nurl:     "
     "https://m.example:443\n",
     "",
     "",
     ""},
    {"ShowsTheUrlOfAnAddress",
     kDestination,
     "\"ManagerIP\"=\"fe80::1\"",
     {"manager", "show"},
     EX_OK,
     "host:    (empty)\naddress: fe80::1\nport:    31136\nurl:     http://[fe80::1]:31136\n",
     "",
     "",
     ""},
    {"SetsAHostWithItsAddress",
     "",
     "",
     {"manager", "set", "--host", "localhost"},
     EX_OK,
     "manager: host: (empty) -> localhost\nmanager: address: 0.0.0.0 -> 127.0.0.1\n",
     "",
     kDestination,
     Stored("127.0.0.1", "localhost", "79a0")},
    {"SetsAHostWithTls",
     "",
     "",
     {"manager", "set", "--host", "https://localhost", "-p", "443"},
     EX_OK,
     "manager: host: (empty) -> https://localhost\nmanager: address: 0.0.0.0 -> 127.0.0.1\n"
     "manager: port: 31136 -> 443\n",
     "",
     kDestination,
     Stored("127.0.0.1", "https://localhost", "01bb")},
    {"SetsAHostThatIsAnAddress",
     "",
     "",
     {"manager", "set", "--host", "192.0.2.7"},
     EX_OK,
     "manager: host: (empty) -> 192.0.2.7\nmanager: address: 0.0.0.0 -> 192.0.2.7\n",
     "",
     kDestination,
     Stored("192.0.2.7", "192.0.2.7", "79a0")},
    {"SetsHostAndAddress",
     "",
     "",
     {"manager", "set", "--host", "no.such.invalid", "--address", "192.0.2.7"},
     EX_OK,
     "manager: host: (empty) -> no.such.invalid\nmanager: address: 0.0.0.0 -> 192.0.2.7\n",
     "",
     kDestination,
     Stored("192.0.2.7", "no.such.invalid", "79a0")},
    {"SetsAnAddressOf32Characters",
     "",
     "",
     {"manager", "set", "--address", "2001:db8:1111:2222:3333:4444:5:6"},
     EX_OK,
     "manager: address: 0.0.0.0 -> 2001:db8:1111:2222:3333:4444:5:6\n",
     "",
     kDestination,
     Stored("2001:db8:1111:2222:3333:4444:5:6", "", "79a0")},
    {"RefusesALongerAddress",
     "",
     "",
     {"manager", "set", "--address", kLongAddress},
     EX_DATAERR,
     "",
     std::string("veloxctl: ") + kLongAddress +
         ": an address may have 32 characters; give a host name and an IPv4 address\n",
     kDestination,
     kUnchanged},
    {"RefusesALongerAddressAsHost",
     "",
     "",
     {"manager", "set", "--host", kLongAddress},
     EX_DATAERR,
     "",
     std::string("veloxctl: ") + kLongAddress +
         ": an address may have 32 characters; give a host name and an IPv4 address\n",
     kDestination,
     kUnchanged},
    {"RefusesANameAsAddress",
     "",
     "",
     {"manager", "set", "--address", "localhost"},
     EX_DATAERR,
     "",
     "veloxctl: --address localhost: an IPv4 or IPv6 address is wanted\n",
     kDestination,
     kUnchanged},
    {"RefusesAPath",
     "",
     "",
     {"manager", "set", "--host", "localhost/x"},
     EX_DATAERR,
     "",
     "veloxctl: --host localhost/x: a host name or an address is wanted, with https:// before it "
     "for TLS\n",
     kDestination,
     kUnchanged},
    {"RefusesAHostWithoutManager",
     "",
     "",
     {"manager", "set", "--host", "localhost", "--address", "0.0.0.0"},
     EX_USAGE,
     "",
     "veloxctl: with the address 0.0.0.0 there is no manager: the host would be dropped\n",
     kDestination,
     kUnchanged},
    {"RefusesAPort",
     "",
     "",
     {"manager", "set", "--port", "65536"},
     EX_USAGE,
     "",
     "veloxctl: --port 65536: a number from 1 to 65535 is wanted\n",
     kDestination,
     kUnchanged},
    {"SetsNothing",
     "",
     "",
     {"manager", "set"},
     EX_USAGE,
     "",
     "veloxctl: nothing is to be set; see \"veloxctl manager set --help\"\n",
     "",
     ""},
    {"TakesTheManagerAway",
     kDestination,
     "\"ManagerIP\"=\"10.0.0.1\"\n\"IPorHost\"=\"m.example\"\n\"PortNumber\"=dword:00000050",
     {"manager", "set", "--address", "0.0.0.0"},
     EX_OK,
     "manager: host: m.example -> (empty)\nmanager: address: 10.0.0.1 -> 0.0.0.0\n",
     "",
     kDestination,
     Stored("0.0.0.0", "", "0050")},
    {"TakesTheHostAway",
     kDestination,
     "\"ManagerIP\"=\"10.0.0.1\"\n\"IPorHost\"=\"m.example\"",
     {"manager", "set", "--host", ""},
     EX_OK,
     "manager: host: m.example -> (empty)\n",
     "",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Manager, MethodTest, testing::ValuesIn(kManagerRows),
                         test_support::Title());

TEST_F(ManagerCommandTest, HostThatDoesNotResolveIsRefused) {
    const Result result = Veloxctl({"manager", "set", "--host", "no.such.invalid"});
    EXPECT_EQ(result.status, EX_NOHOST);
    EXPECT_EQ(result.errors,
              "veloxctl: no.such.invalid: the name does not resolve; give its address with "
              "--address\n");
    EXPECT_EQ(Values(kDestination), kUnchanged);
}

TEST_F(ManagerCommandTest, MissingKeysAreTold) {
    Import("[-" + std::string(kDestination) + "]\n[-" + kMethodKey + "]\n");
    const Result set = Veloxctl({"manager", "set", "--port", "80"});
    EXPECT_EQ(set.status, EX_NOINPUT);
    EXPECT_THAT(set.errors, HasSubstr("VELOXREPORT\\Address: it does not exist"));
    const Result method = Veloxctl({"method", "set", "mail"});
    EXPECT_EQ(method.status, EX_NOINPUT);
    EXPECT_THAT(method.errors, HasSubstr("SETTING: it does not exist"));
    EXPECT_EQ(Veloxctl({"manager", "show"}).status, EX_OK);
}

}  // namespace
}  // namespace veloxctl_test
