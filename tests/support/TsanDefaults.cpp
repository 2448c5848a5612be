/// @file
/// Thread-sanitizer defaults for the test binary.

#if defined(__SANITIZE_THREAD__)
/// The loopback test servers run inside the prebuilt httplib library, which the
/// thread sanitizer cannot see into: it reports that library's own internal
/// hand-offs between its worker threads. Calls made from it are not checked.
extern "C" const char* __tsan_default_suppressions() { return "called_from_lib:libcpp-httplib.so\n"; }
#endif
