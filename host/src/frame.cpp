#include "vorlin/frame.h"

namespace Vorlin {

IQFFrame::~IQFFrame() = default;

}  // namespace Vorlin
