/* Asks for the password of a subsystems server: first for its length, then for the text.
   Usage: ask_password SERVER */
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>

#include <ConfigurationFile/flat_functions.h>

/* Writes zeros that the compiler must not omit, as it may omit a memset before free. */
static void wipe(wchar_t* text, unsigned int length) {
    volatile wchar_t* place = text;
    while (length-- > 0) {
        *place++ = 0;
    }
}

int main(int count, char** words) {
    enum { asks_for_lengths = 2, copies = 0, longest_name = 256 };
    unsigned int public_key = 0, private_key = 0, certificate = 0, password = 0, trusted = 0;
    wchar_t server[longest_name];

    setlocale(LC_ALL, "");
    if (count != 2 || mbstowcs(server, words[1], longest_name) >= longest_name) {
        fprintf(stderr, "Usage: ask_password SERVER\n");
        return 2;
    }
    if (get_subsystems_server_certificate_information(server, NULL, &public_key, NULL, &private_key,
                                                      NULL, &certificate, NULL, &password, NULL,
                                                      &trusted, asks_for_lengths) != 1) {
        fprintf(stderr, "the file cannot be read; QNTRACE=11 in the environment says why\n");
        return 1;
    }
    wchar_t* text = calloc(password, sizeof *text); /* includes the terminating zero */
    if (text == NULL) {
        return 1;
    }
    const int result = get_subsystems_server_certificate_information(
        server, NULL, &public_key, NULL, &private_key, NULL, &certificate, text, &password, NULL,
        &trusted, copies);
    if (result == 1) {
        /* A real program opens its private key here. This one prints the length of the password. */
        printf("%u characters\n", (unsigned int)wcsnlen(text, password));
    } else {
        fprintf(stderr, "the file cannot be read, or a longer password was stored meanwhile\n");
    }
    wipe(text, password);
    free(text);
    return result == 1 ? 0 : 1;
}
