/* Reports the vector instructions that the effects use. They change the effects' speed, not their output. */
#ifndef SONIVEX_VECTORS_H
#define SONIVEX_VECTORS_H

#include "sonivex/export.h"

/** Names the vector instruction set that the effects use on this processor, and the doubles in one vector.
 *  @return human-readable text such as "AVX2, 4 doubles": null-terminated ASCII, valid while the library is
 *          loaded, never null.
 *  The first call may detect the processor's instruction sets.
 *  [any, concurrent] real-time safe */
SONIVEX_API const char* aem_VectorTarget(void);

#endif /* SONIVEX_VECTORS_H */
