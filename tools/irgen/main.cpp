#include <iostream>

#include "command.h"

int main(int argc, char** argv) {
    return sonivex_irgen::runCommand({argv + 1, argv + argc}, SONIVEX_DEFAULT_SOFA, std::cout, std::cerr);
}
