/* Which vector instructions the effects use. It changes how fast they are, not what they put out. */
#ifndef SONIVEX_VECTORS_H
#define SONIVEX_VECTORS_H

#include "sonivex/export.h"

/** Name the set of vector instructions that this processor has the effects use, and how many doubles one
 *  vector holds.
 *  @return for people, such as "AVX2, 4 doubles"; null-terminated ASCII, valid as long as the library is
 *          loaded, never null.
 *  Any thread may call it, at any time. It allocates nothing; the first call may ask the processor what it
 *  has. */
SONIVEX_API const char* aem_VectorTarget(void);

#endif /* SONIVEX_VECTORS_H */
