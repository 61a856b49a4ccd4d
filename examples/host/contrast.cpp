// More contrast for a picture file: contrast PLUGIN IN OUT

#include <array>
#include <cstdint>
#include <exception>
#include <iostream>
#include <string>
#include <variant>

#include "caller.h"
#include "host.h"
#include "picture_file.h"

using namespace tarvo::host;

int main(int argc, char** argv) try {
    if (argc != 4) throw HostError("usage: contrast PLUGIN IN OUT");
    Host host;
    if (!host.load_plugin(argv[1])) throw HostError("the plugin refuses this host");
    Caller caller(host);

    // photo.TRV_AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6, 0)
    const ObjectRef photo = read_picture_file(host, argv[2]);
    std::array<Value, 6> arguments = {Nil{}, Color{0x808080}, 1.6, 1.6, 1.6, 0};
    const Value result = caller.call_on(photo, "TRV_AdjustContrast", arguments);
    if (is_nil(result)) {
        const Value code = caller.call("TRV_GetLastError", {});
        throw HostError("error " + std::to_string(std::get<std::int32_t>(code)));
    }
    write_picture_file(dynamic_cast<const Picture&>(*std::get<ObjectRef>(result).get()), argv[3]);
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
