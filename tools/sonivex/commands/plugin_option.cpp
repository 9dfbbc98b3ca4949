#include "plugin_option.h"

namespace sonivex_tool {

CLI::Option* addPluginOption(CLI::App& command, std::string& plugin) {
    return command
        .add_option("--plugin", plugin,
                    "The filter's library. Without it, libSonivexFilter.so beside\n"
                    "this program, in ../lib from there, or on the library path")
        ->option_text("FILE");
}

}  // namespace sonivex_tool
