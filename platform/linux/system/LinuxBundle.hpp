// The bundle of a program in PREFIX/bin: auxiliary executables are in PREFIX/libexec/kestrivane,
// resources in PREFIX/share/kestrivane. The build tree is laid out like that too.
//
// Thread-safety: may be called from any thread.
#pragma once

#include "platform/Bundle.hpp"

namespace kestrivane {

class LinuxBundle final : public Bundle {
 public:
  /// The bundle of the program that runs, wherever its folder has been moved.
  static LinuxBundle ofThisProgram();
  /// The bundle of the program at `programURL`.
  explicit LinuxBundle(const FileURL& programURL);

  std::optional<FileURL> auxiliaryExecutable(std::string_view name) const override;
  std::optional<FileURL> resource(std::string_view name) const override;

 private:
  FileURL prefix_;
};

}  // namespace kestrivane
