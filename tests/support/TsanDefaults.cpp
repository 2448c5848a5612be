/// @file
/// Thread-sanitizer defaults for the test binary.

#if defined(__SANITIZE_THREAD__)
/// The loopback test servers run inside the prebuilt httplib library, which the
/// thread sanitizer cannot see into: it reports that library's own internal
/// hand-offs between its worker threads (its lazily made tables are written by
/// one worker and read by another behind a guard the sanitizer cannot see).
/// Calls made from it are not checked, nor races whose stacks run through it.
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libcpp-httplib.so\n"
         "race:libcpp-httplib.so\n";
}
#endif
