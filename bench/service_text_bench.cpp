// Building the service information text of a full contract (99 options) in English, against a loop
// of the registry calls that it makes: the same keys, values and buffers, without the text. The
// trace is not initialised, and root reads through the map.
#include <ntwin32/registry.h>
#include <support/server.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "support/ratios.h"
#include "velox/contract_items.h"
#include "velox/service_info.h"

namespace {

constexpr char kSetting[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
constexpr DWORD kOptions = 99;

// One value in the order in which the text reads them.
struct Item {
    std::string name;
    bool number;
};

std::vector<Item> ItemsOfTheText() {
    std::vector<Item> items = {{VX_REG_USER[VX_REG_USER_KIND], true}};
    for (int i = 0; i < VX_USER_ITEMS; ++i) {
        if (VX_TEXT_USER_en[i][0] != '\0') {
            items.push_back({VX_REG_USER[i + 1], false});
        }
    }
    for (int i = 0; i < VX_MACHINE_ITEMS; ++i) {
        items.push_back({VX_REG_MACHINE[i], false});
    }
    items.push_back({VX_REG_OPTION[VX_REG_OPTION_COUNT], true});
    for (DWORD option = 1; option <= kOptions; ++option) {
        items.push_back(
            {"OPTCD" + std::string(option < 10 ? "0" : "") + std::to_string(option), false});
    }
    for (int i = 0; i < VX_SHOP_ITEMS; ++i) {
        items.push_back({VX_REG_SHOP[i], false});
    }
    return items;
}

void StoreContract(const std::vector<Item> &items) {
    const char text[] = "a value of some length";
    std::vector<KES_REG_CHANGE> changes;
    const DWORD numbers[] = {1, kOptions};
    int next_number = 0;
    for (const Item &item : items) {
        const auto *number =
            reinterpret_cast<const BYTE *>(&numbers[item.number ? next_number++ : 0]);
        changes.push_back({KES_REG_SET_VALUE, item.number ? REG_DWORD : REG_SZ, kSetting,
                           item.name.c_str(),
                           item.number ? number : reinterpret_cast<const BYTE *>(text),
                           item.number ? DWORD{sizeof numbers[0]} : DWORD{sizeof text}, 0});
    }
    if (KesRegApplyBatch(HKEY_LOCAL_MACHINE, changes.data(), static_cast<DWORD>(changes.size()),
                         nullptr) != ERROR_SUCCESS) {
        throw std::runtime_error("the contract cannot be stored");
    }
}

const std::vector<Item> &Contract() {
    static const test_support::Server server;
    static const test_support::EnvironmentVariable language("KES_LANG", "en_US");
    static const std::vector<Item> items = [] {
        std::vector<Item> all = ItemsOfTheText();
        StoreContract(all);
        return all;
    }();
    return items;
}

void ServiceText(benchmark::State &state) {
    (void)Contract();
    for (auto _ : state) {
        char *text = nullptr;
        DWORD length = 0;
        if (GetVlxServiceInfo(&text, &length) == FALSE) {
            state.SkipWithError("no text");
        }
        std::free(text);
    }
}
BENCHMARK(ServiceText);

void RegistryCalls(benchmark::State &state) {
    const std::vector<Item> &items = Contract();
    for (auto _ : state) {
        for (const Item &item : items) {
            BYTE data[4096];
            DWORD size = item.number ? sizeof(DWORD) : sizeof data;
            DWORD type = 0;
            HKEY key = 0;
            RegOpenKeyEx(HKEY_LOCAL_MACHINE, kSetting, 0, KEY_READ, &key);
            if (RegQueryValueEx(key, item.name.c_str(), nullptr, &type, data, &size) !=
                ERROR_SUCCESS) {
                state.SkipWithError("no value");
            }
            RegCloseKey(key);
        }
    }
}
BENCHMARK(RegistryCalls);

}  // namespace

int main(int argc, char **argv) {
    return bench::Run(argc, argv,
                      {{"service text of 99 options, in its registry calls", "ServiceText",
                        "RegistryCalls", 3.0}});
}
