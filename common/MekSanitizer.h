// Whether the address sanitizer instruments this build: code that manages
// memory or the stack in its own way steps aside for it.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TAVO_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) && !defined(TAVO_ADDRESS_SANITIZER)
#define TAVO_ADDRESS_SANITIZER 1
#endif

#if defined(TAVO_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#endif
