// Copies the compiled-in responses into ConvolveReverb's tables when the library is loaded. The arrays are
// constants, so the initialisation order of the files does not matter.
#include <iterator>

#include "convolve_reverb.h"
#include "impulse_response_tables.h"

#define SONIVEX_FILL_TABLE(name, array) \
    const ConvolveReverb::Table ConvolveReverb::g_##name(std::begin(array), std::end(array));
#define SONIVEX_FILL_FROM_OWN_ARRAY(name) SONIVEX_FILL_TABLE(name, k_##name)

SONIVEX_TABLES_LOUDSPEAKERS(SONIVEX_FILL_FROM_OWN_ARRAY)
SONIVEX_FILL_TABLE(dolbyL441, k_dolby441)
SONIVEX_FILL_TABLE(dolbyR441, k_dolby441)
