// What every module says of itself: the version of the program that it belongs to.
#ifndef __linux__
#error "This adapter is for Linux."
#endif

extern "C" [[gnu::visibility("default")]] const char kestrivaneModuleVersion[] = KESTRIVANE_VERSION;
