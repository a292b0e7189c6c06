/* What a caller meets that can use nothing but C: loads the library by its name alone, finds the
   flat functions in it, and copies and measures one entry.
   Usage: flat_functions LIBRARY DIRECTORY    (an empty directory for the machine of this test) */
#include <stdio.h>
#include <wchar.h>

#include <windows.h>

typedef int (*ClusterFunction)(wchar_t*, unsigned int*, wchar_t*, unsigned int*, wchar_t*,
                               unsigned int*, wchar_t*, unsigned int*, int);

static const char document[] =
    "<ORVACertificates><Notifiers><ServerGroupCertificate><PublicKeyPath>C:\\p</PublicKeyPath>"
    "<CertificatePath>C:\\\xC3\xBC\xF0\x9F\x94\x91</CertificatePath></ServerGroupCertificate>"
    "</Notifiers></ORVACertificates>";

/* The file and the profile lie in the directory; the setting of the machine must not be there. */
static int enter_machine(const wchar_t* directory) {
    HKEY key = NULL;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Orvane Systems\\Certificates", 0, KEY_READ,
                      &key) == ERROR_SUCCESS) {
        RegCloseKey(key);
        printf("skipped: this machine has a setting of its own\n");
        return 0;
    }
    wchar_t name[1024];
    swprintf(name, 1024, L"%ls\\certificates.xml", directory);
    FILE* file = _wfopen(name, L"wb");
    if (file == NULL || fwrite(document, 1, sizeof document - 1, file) != sizeof document - 1) {
        return -1;
    }
    fclose(file);
    _wputenv_s(L"ORVA_Certificates", name);
    _wputenv_s(L"USERPROFILE", directory);
    return 1;
}

static int check_cluster(ClusterFunction function) {
    wchar_t text[4][16];
    unsigned int length[4] = {16, 16, 16, 16};
    return function(text[0], &length[0], text[1], &length[1], text[2], &length[2], text[3],
                    &length[3], 0) == 1 &&
           wcscmp(text[0], L"C:\\p") == 0 && text[1][0] == 0 &&
           wcscmp(text[2], L"C:\\\u00fc\U0001F511") == 0 && text[3][15] == 0 &&
           function(NULL, &length[0], NULL, &length[1], NULL, &length[2], NULL, &length[3], 2) ==
               1 &&
           length[0] == 5 && length[1] == 1 && length[2] == 7 && length[3] == 1;
}

int wmain(int count, wchar_t** words) {
    static const char* const names[] = {"get_cluster_certificate_information",
                                        "get_subsystems_certificate_information",
                                        "get_subsystems_server_certificate_information",
                                        "get_subsystems_remote_client_certificate_information",
                                        "get_remote_client_certificate_information",
                                        "get_devices_certificate_information"};
    const int entered = count == 3 ? enter_machine(words[2]) : -1;
    if (entered != 1) {
        return -entered;
    }
    const HMODULE library = LoadLibraryW(words[1]);
    for (int i = 0; i < 6; ++i) {
        if (library == NULL || GetProcAddress(library, names[i]) == NULL) {
            printf("the library does not load or lacks %s: %lu\n", names[i], GetLastError());
            return 1;
        }
    }
    if (!check_cluster((ClusterFunction)(void (*)(void))GetProcAddress(library, names[0]))) {
        printf("the entry of the cluster is not the one of the file\n");
        return 1;
    }
    return FreeLibrary(library) ? 0 : 1;
}
