// Thread-sanitizer suppressions for the test binary's loopback servers.
//
// Debian's cpp-httplib is a prebuilt, uninstrumented library: its function-local statics (such as the
// request-line regex) are read on the guard's inline fast path, which the sanitizer cannot see, so every
// second worker thread looks like it races with the first. Only what that library does through the
// sanitizer's interceptors is ignored; races in the library under test and in the tests are still reported.
#if defined(__SANITIZE_THREAD__)
extern "C" const char* __tsan_default_suppressions() {
    return "called_from_lib:libcpp-httplib.so\n";
}
#endif
