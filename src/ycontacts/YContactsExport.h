#pragma once
// YContactsExport: YCONTACTS_EXPORT marks what the shared library shows its hosts; everything else stays inside.

// The library is built with hidden visibility, so a type or function a host reaches must say so. Only the
// public headers (the ones installed) use it.
#if defined(__GNUC__) || defined(__clang__)
#define YCONTACTS_EXPORT __attribute__((visibility("default")))
#else
#define YCONTACTS_EXPORT
#endif
