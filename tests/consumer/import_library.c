/* A program without a runtime, to be linked by any linker with the import library for C: ends with
   0 when the library was loaded and answered. */
#include <ConfigurationFile/flat_functions.h>

__declspec(dllimport) void __stdcall ExitProcess(unsigned int status);

void start(void) {
    unsigned int lengths[4];
    ExitProcess(get_cluster_certificate_information(NULL, &lengths[0], NULL, &lengths[1], NULL,
                                                    &lengths[2], NULL, &lengths[3], 2) == 1
                    ? 0
                    : 1);
}
