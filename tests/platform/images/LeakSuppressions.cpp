// What LeakSanitizer finds in other people's libraries. x265 3.5 forgets some buffers of its frame
// filter each time it closes an encoder; nothing that its callers do changes that.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libx265.so";
}
