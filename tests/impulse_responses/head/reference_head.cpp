#include "reference_head.h"

#include <cmath>
#include <fstream>
#include <string>

#ifdef SONIVEX_HEAD_FILE
#include "sofa_head.h"
#endif

namespace response_quality {
namespace {

double radius_m() {
#ifdef SONIVEX_RESPONSE_SOURCE
    const std::string field = "// Head radius: ";
    std::ifstream source(SONIVEX_RESPONSE_SOURCE);
    std::string line;
    while (std::getline(source, line)) {
        if (line.rfind(field, 0) == 0) return std::stod(line.substr(field.size()));
    }
    return std::nan("");
#else
    return 0.0875;
#endif
}

HeadReference readReference() {
    HeadReference head{.radius_m = radius_m(), .measured = {}};
#ifndef SONIVEX_RESPONSE_SOURCE
    head.is_default = true;
#endif
#ifdef SONIVEX_HEAD_FILE
    head.measured = readMeasuredHead(SONIVEX_HEAD_FILE);
#endif
    return head;
}

}  // namespace

const HeadReference& referenceHead() {
    static const HeadReference head = readReference();
    return head;
}

}  // namespace response_quality
