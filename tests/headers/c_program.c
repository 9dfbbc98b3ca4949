// Calls the public functions from a C program.
#include <stdio.h>
#include <string.h>

#include "sonivex/sonivex.h"

static char logged[256];

static void keepLine(const char* line, int length) {
    if (length >= 0 && (size_t)length < sizeof logged) memcpy(logged, line, (size_t)length + 1);
}

static int failed(const char* what) {
    fprintf(stderr, "%s\n", what);
    return 1;
}

int main(void) {
    enum { kFrames = 512, kChannels = 2, kSamples = kFrames * kChannels };
    short in[kSamples];
    short out[kSamples];
    for (int i = 0; i < kSamples; ++i) in[i] = (short)(i % 2 == 0 ? 1000 : -1000);

    void* const handle = aem_CreateNormalizer(kChannels, 48000);
    if (handle == NULL) return failed("aem_CreateNormalizer returned NULL");
    if (aem_ProcessNormalizer(handle, in, out, kFrames, kChannels) != kSamples)
        return failed("aem_ProcessNormalizer returned a wrong sample count");
    if (out[0] < 9900 || out[0] > 10000) return failed("the output is not 20 dB louder than the input");
    aem_ReleaseNormalizer(handle);

    logWriterFun = keepLine;
    if (aem_ProcessNormalizer(NULL, in, out, kFrames, kChannels) != -1)
        return failed("aem_ProcessNormalizer accepted a null handle");
    if (strstr(logged, "handle is NULL") == NULL)
        return failed("aem_ProcessNormalizer did not log the null handle");
    ZubrelAem_logTrace("prefix ", "%s\n", "message");
    if (strcmp(logged, "prefix message\n") != 0)
        return failed("ZubrelAem_logTrace did not pass its line to logWriterFun");
    if (strlen(aem_VectorTarget()) == 0) return failed("aem_VectorTarget returned an empty name");
    if (logWrite("") != 0) return failed("logWrite did not return 0 for an empty line");
    return 0;
}
