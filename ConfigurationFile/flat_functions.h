#ifndef CONFIGURATION_FILE_FLAT_FUNCTIONS_H
#define CONFIGURATION_FILE_FLAT_FUNCTIONS_H

/*
 * The C interface. Each call loads the keys and reads the configuration file anew.
 *
 * An output is a buffer and a pointer to its length in wide characters. flags 0: copies each text
 * into its buffer unless the buffer is null. *length is the size of the buffer and is not changed;
 * a text of exactly that length is not null-terminated, a shorter one is followed by zeros up to
 * the end. Flag 2: stores the needed length of every text, including the terminator, and changes
 * no buffer. Any other flags: only the result counts.
 *
 * Returns 1 if the file could be read (the texts of an unknown server are empty), 0 if not, -2 if a
 * length pointer is null or a buffer is too small (the buffers before it have been filled). The
 * functions with a trusted path do not check the pointer to the certificate's length: it must not
 * be null unless flags is 0 and the certificate buffer is null. A failure of the keys or of the
 * machine-wide mutex throws a C++ exception, which derives from std::exception.
 */

#include <stddef.h> // NOLINT(modernize-deprecated-headers): C programs include this header

#include "ConfigurationFile/export.h"

#ifdef __cplusplus
extern "C" {
#endif

VDCERTIFICATES_API int
get_cluster_certificate_information(wchar_t* public_key, unsigned int* public_key_length,
                                    wchar_t* private_key, unsigned int* private_key_length,
                                    wchar_t* certificate, unsigned int* certificate_length,
                                    wchar_t* password, unsigned int* password_length, int flags);

VDCERTIFICATES_API int get_subsystems_certificate_information(
    const wchar_t* server, wchar_t* public_key, unsigned int* public_key_length,
    wchar_t* private_key, unsigned int* private_key_length, wchar_t* certificate,
    unsigned int* certificate_length, wchar_t* password, unsigned int* password_length, int flags);

VDCERTIFICATES_API int get_subsystems_server_certificate_information(
    const wchar_t* server, wchar_t* public_key, unsigned int* public_key_length,
    wchar_t* private_key, unsigned int* private_key_length, wchar_t* certificate,
    unsigned int* certificate_length, wchar_t* password, unsigned int* password_length,
    wchar_t* trusted, unsigned int* trusted_length, int flags);

/* Returns the entry of the subsystems server, not of the remote client (required). */
VDCERTIFICATES_API int get_subsystems_remote_client_certificate_information(
    const wchar_t* server, wchar_t* public_key, unsigned int* public_key_length,
    wchar_t* private_key, unsigned int* private_key_length, wchar_t* certificate,
    unsigned int* certificate_length, wchar_t* password, unsigned int* password_length,
    wchar_t* trusted, unsigned int* trusted_length, int flags);

VDCERTIFICATES_API int get_remote_client_certificate_information(
    const wchar_t* server, wchar_t* public_key, unsigned int* public_key_length,
    wchar_t* private_key, unsigned int* private_key_length, wchar_t* certificate,
    unsigned int* certificate_length, wchar_t* password, unsigned int* password_length,
    wchar_t* trusted, unsigned int* trusted_length, int flags);

VDCERTIFICATES_API int get_devices_certificate_information(
    const wchar_t* server, wchar_t* public_key, unsigned int* public_key_length,
    wchar_t* private_key, unsigned int* private_key_length, wchar_t* certificate,
    unsigned int* certificate_length, wchar_t* password, unsigned int* password_length,
    wchar_t* trusted, unsigned int* trusted_length, int flags);

#ifdef __cplusplus
}
#endif

#endif
