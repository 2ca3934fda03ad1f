// The objects of the fake CoreFoundation, for the fakes of other libraries that take or give them.
// Thread-safety and ownership: as `FakeSystem`.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <CoreFoundation/CoreFoundation.h>

#include "tests/macos/fakes/FakeSystem.hpp"

struct CFStringObject final : kestrivane::test::FakeObject {
  explicit CFStringObject(std::string characters) : text(std::move(characters)) {}
  const char* kind() const override { return "string"; }
  std::string text;
};

struct CFArrayObject final : kestrivane::test::FakeObject {
  explicit CFArrayObject(std::vector<CFTypeRef> objects);
  ~CFArrayObject() override;
  const char* kind() const override { return "array"; }
  std::vector<CFTypeRef> values;  ///< the array has a reference to each
};

struct CFNumberObject final : kestrivane::test::FakeObject {
  explicit CFNumberObject(int number) : value(number) {}
  const char* kind() const override { return "number"; }
  int value;
};

struct CFDictionaryObject final : kestrivane::test::FakeObject {
  explicit CFDictionaryObject(std::map<const void*, CFTypeRef> objects);
  ~CFDictionaryObject() override;
  const char* kind() const override { return "dictionary"; }
  std::map<const void*, CFTypeRef> values;  ///< by keys; the dictionary has a reference to each
};

struct CFURLObject final : kestrivane::test::FakeObject {
  CFURLObject(std::string file, bool directory) : path(std::move(file)), isDirectory(directory) {}
  const char* kind() const override { return "URL"; }
  std::string path;
  bool isDirectory;
};
