#pragma once
// YThreadAnnotations: clang's thread-safety attributes, so that clang checks which lock guards which field.

// Built with clang and -Wthread-safety, a field read or written without its lock, or a function called
// without the lock it requires, is a compile error (the "clang-thread-safety" preset). Other compilers
// see nothing.
#if defined(__clang__)
#define YCONTACTS_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define YCONTACTS_THREAD_ANNOTATION(x)
#endif

#define Y_CAPABILITY(name) YCONTACTS_THREAD_ANNOTATION(capability(name))
#define Y_SCOPED_CAPABILITY YCONTACTS_THREAD_ANNOTATION(scoped_lockable)
#define Y_GUARDED_BY(lock) YCONTACTS_THREAD_ANNOTATION(guarded_by(lock))
#define Y_ACQUIRED_BEFORE(...) YCONTACTS_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define Y_REQUIRES(...) YCONTACTS_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define Y_EXCLUDES(...) YCONTACTS_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define Y_ACQUIRE(...) YCONTACTS_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define Y_RELEASE(...) YCONTACTS_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define Y_RETURN_CAPABILITY(x) YCONTACTS_THREAD_ANNOTATION(lock_returned(x))
