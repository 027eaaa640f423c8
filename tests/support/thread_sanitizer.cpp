// What ThreadSanitizer reports without a reason, in every test program of a build with it.
extern "C" const char *__tsan_default_suppressions();

extern "C" const char *__tsan_default_suppressions() {
  // Without TZ each tzset() of glibc replaces a block, under a lock of its own that the sanitizer cannot see.
  return "race:tzset_internal\n";
}
