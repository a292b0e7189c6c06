#pragma once

// The system's headers in the order and with the macros that win32/ needs.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <winsock2.h>
// winsock2.h comes before windows.h
#include <windows.h>
