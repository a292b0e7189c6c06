#ifndef CONFIGURATION_FILE_FLAT_FUNCTIONS_H
#define CONFIGURATION_FILE_FLAT_FUNCTIONS_H

/*
 * The C interface: one call is a whole conversation with the configuration file.
 *
 * Each output is a buffer and a pointer to its length in wide characters. flags 0 copies each
 * text into its buffer unless that is null; *length is what the buffer holds, stays as it is, and
 * a text that fills it exactly gets no terminating zero, while the rest of a larger one is filled
 * with zeros. flags with bit 2 set touches no buffer and stores the needed length of every text,
 * its terminating zero counted. Any other flags only ask for the result.
 *
 * Result: 1 when the file could be read (an unknown server gives empty texts), 0 when not, -2
 * when a length pointer is null or a buffer too small (the buffers before it are filled by then).
 * In the functions with a trusted path a null certificate length is not noticed and must not be
 * passed unless flags is 0 and the certificate buffer is null. A machine whose keys or mutex fail
 * raises a C++ exception.
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

/* Answers with the entry of the subsystems server, not of the remote client: required. */
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
