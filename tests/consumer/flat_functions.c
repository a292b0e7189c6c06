/* What a caller meets that can use nothing but C: loads the library by its name alone and goes
   through the buffers of the flat functions.
   Usage: flat_functions LIBRARY DIRECTORY    (an empty directory for the machine of this test) */
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>

#include <windows.h>

typedef int (*ClusterFunction)(wchar_t*, unsigned int*, wchar_t*, unsigned int*, wchar_t*,
                               unsigned int*, wchar_t*, unsigned int*, int);
typedef int (*ServerFunction)(const wchar_t*, wchar_t*, unsigned int*, wchar_t*, unsigned int*,
                              wchar_t*, unsigned int*, wchar_t*, unsigned int*, wchar_t*,
                              unsigned int*, int);

static int failures = 0;

#define CHECK(condition)                                                                           \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            ++failures;                                                                            \
            printf("line %d: %s does not hold\n", __LINE__, #condition);                           \
        }                                                                                          \
    } while (0)

enum { pairs = 5, room = 16 };

/* One buffer and length for each text of an entry; the last pair is the trusted certificate. */
typedef struct {
    wchar_t text[pairs][room];
    unsigned int length[pairs];
} Buffers;

static Buffers filled(void) {
    Buffers buffers;
    for (int pair = 0; pair < pairs; ++pair) {
        buffers.length[pair] = room;
        wmemset(buffers.text[pair], L'#', room);
    }
    return buffers;
}

static int call_cluster(ClusterFunction function, Buffers* b, int flags) {
    return function(b->text[0], &b->length[0], b->text[1], &b->length[1], b->text[2], &b->length[2],
                    b->text[3], &b->length[3], flags);
}

static int call_server(ServerFunction function, const wchar_t* server, Buffers* b, int flags) {
    return function(server, b->text[0], &b->length[0], b->text[1], &b->length[1], b->text[2],
                    &b->length[2], b->text[3], &b->length[3], b->text[4], &b->length[4], flags);
}

static void check_cluster(ClusterFunction function) {
    Buffers b = filled();
    CHECK(call_cluster(function, &b, 0) == 1);
    CHECK(wcscmp(b.text[0], L"C:\\p") == 0 && wcscmp(b.text[1], L"C:\\private") == 0);
    CHECK(wcscmp(b.text[2], L"C:\\\u00fc\U0001F511") == 0 && b.text[3][0] == 0);
    CHECK(b.text[3][room - 1] == 0); /* zeros up to the length that was given */
    CHECK(b.length[0] == room);

    b = filled(); /* the lengths, each with its closing zero */
    CHECK(function(NULL, &b.length[0], NULL, &b.length[1], NULL, &b.length[2], NULL, &b.length[3],
                   2) == 1);
    CHECK(b.length[0] == 5 && b.length[1] == 11 && b.length[2] == 7 && b.length[3] == 1);

    b = filled(); /* neither copied nor stored */
    CHECK(call_cluster(function, &b, 1) == 1);
    CHECK(b.text[0][0] == L'#' && b.length[0] == room);
    CHECK(call_cluster(function, &b, 3) == 1);
    CHECK(b.text[0][0] == L'#' && b.length[0] == 5);

    b = filled(); /* room for the characters alone, then for one less */
    b.length[0] = 4;
    b.length[1] = 9;
    CHECK(call_cluster(function, &b, 0) == -2);
    CHECK(wmemcmp(b.text[0], L"C:\\p#", 5) == 0 && b.text[1][0] == L'#');

    b = filled();
    CHECK(function(b.text[0], NULL, b.text[1], &b.length[1], b.text[2], &b.length[2], b.text[3],
                   &b.length[3], 0) == -2);
}

static void check_server(ServerFunction function) {
    Buffers b = filled();
    CHECK(call_server(function, L"srv01", &b, 0) == 1);
    CHECK(wcscmp(b.text[0], L"k") == 0 && wcscmp(b.text[4], L"t") == 0);
    CHECK(call_server(function, L"nobody", &b, 2) == 1);
    CHECK(b.length[0] == 1 && b.length[4] == 1);
    /* A missing certificate length is looked at only when there is a buffer for it. */
    CHECK(function(L"SRV01", b.text[0], &b.length[0], NULL, &b.length[1], NULL, NULL, NULL,
                   &b.length[3], NULL, &b.length[4], 0) == 1);
}

static const char document[] =
    "<ORVACertificates><Notifiers><ServerGroupCertificate><PublicKeyPath>C:\\p</PublicKeyPath>"
    "<PrivateKeyPath>C:\\private</PrivateKeyPath>"
    "<CertificatePath>C:\\\xC3\xBC\xF0\x9F\x94\x91</CertificatePath>"
    "<Password></Password><TrustedCertificatePath></TrustedCertificatePath></"
    "ServerGroupCertificate>"
    "<Notifier "
    "Name=\"SRV01\"><SubsystemsServerCertificate><PublicKeyPath>k</PublicKeyPath><PrivateKeyPath>"
    "</PrivateKeyPath><CertificatePath></CertificatePath><Password></Password>"
    "<TrustedCertificatePath>t</TrustedCertificatePath></SubsystemsServerCertificate></Notifier>"
    "</Notifiers><SIPDevices></SIPDevices><MediaRetrieval></MediaRetrieval></ORVACertificates>";

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
    CHECK(file != NULL && fwrite(document, 1, sizeof document - 1, file) == sizeof document - 1);
    fclose(file);
    _wputenv_s(L"ORVA_Certificates", name);
    _wputenv_s(L"USERPROFILE", directory);
    return 1;
}

int wmain(int count, wchar_t** words) {
    if (count != 3) {
        return 2;
    }
    if (!enter_machine(words[2])) {
        return 0;
    }
    const HMODULE library = LoadLibraryW(words[1]);
    if (library == NULL) {
        printf("the library does not load: %lu\n", GetLastError());
        return 1;
    }
    const FARPROC cluster = GetProcAddress(library, "get_cluster_certificate_information");
    const FARPROC server = GetProcAddress(library, "get_subsystems_server_certificate_information");
    const FARPROC client =
        GetProcAddress(library, "get_subsystems_remote_client_certificate_information");
    CHECK(cluster != NULL && server != NULL && client != NULL);
    if (failures == 0) {
        check_cluster((ClusterFunction)(void (*)(void))cluster);
        check_server((ServerFunction)(void (*)(void))server);
        check_server(
            (ServerFunction)(void (*)(void))client); /* required: it asks for the server's */
    }
    FreeLibrary(library);
    printf("%d failures\n", failures);
    return failures == 0 ? 0 : 1;
}
