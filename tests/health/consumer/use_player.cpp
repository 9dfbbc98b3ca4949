#include <vorlin/filter_prototype.h>
#include <vorlin/plugin.h>

#include <iostream>

int main(int argc, char** argv) {
    std::string error;
    const auto plugin = Vorlin::Plugin::load(argc > 1 ? argv[1] : "", error);
    std::cout << error << '\n';
    const auto filter = Vorlin::filterPrototype::createFilter("sonivex", {}, {}, false);
    return filter && filter->getName() == "SonivexFilter" ? 0 : 1;
}
