#pragma once

// Marks the exported interface; everything else is hidden. VDCERTIFICATES_BUILD is defined while
// the library is compiled, VDCERTIFICATES_STATIC if its objects are linked without the library.
#ifdef _WIN32
#ifdef VDCERTIFICATES_BUILD
#define VDCERTIFICATES_API __declspec(dllexport)
#elif defined(VDCERTIFICATES_STATIC)
#define VDCERTIFICATES_API
#else
#define VDCERTIFICATES_API __declspec(dllimport)
#endif
#else
#define VDCERTIFICATES_API __attribute__((visibility("default")))
#endif
