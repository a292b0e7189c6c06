/*
 * Loads the library that the first argument names and, with a second argument, calls the function
 * of that name, which has the signature of get_cluster_certificate_information(). A C program, so
 * that it brings nothing that the library needs.
 */
#include <dlfcn.h>
#include <string.h>
#include <wchar.h>

typedef int (*Get)(wchar_t*, unsigned int*, wchar_t*, unsigned int*, wchar_t*, unsigned int*,
                   wchar_t*, unsigned int*, int);

int main(int count, char** words) {
    void* const library = dlopen(words[1], RTLD_LAZY);
    if (library == NULL || count < 3) {
        return library == NULL;
    }
    void* const found = dlsym(library, words[2]);
    Get get = NULL;
    memcpy(&get, &found, sizeof(get));
    wchar_t texts[4][256];
    unsigned int lengths[4] = {256, 256, 256, 256};
    return get == NULL || get(texts[0], &lengths[0], texts[1], &lengths[1], texts[2], &lengths[2],
                              texts[3], &lengths[3], 0) != 1;
}
