// Helpers of the media tests: exports, and other programs that look at what came of them.
//
// Thread-safety: none. Ownership: a `Exporting` owns its folder and loop.
#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "platform/AssetExportSession.hpp"
#include "platform/linux/media/LinuxAssetExporter.hpp"
#include "tests/support/RunTask.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::mediaTesting {

/// The film of that name in tests/samples/media.
FileURL sample(const std::string& name);

/// What the shell command prints; fails the test when its exit status is not 0.
std::string outputOf(const std::string& command);

/// Runs `ffmpeg` with these arguments, which make a film for a test.
void make(const std::string& arguments);

/// The lines of what `ffprobe` finds for `entries` ("stream=codec_name") in the tracks that
/// `tracks` names ("v", "a:0"; empty for all).
std::vector<std::string> probe(const FileURL& url, const std::string& tracks,
                               const std::string& entries);

/// A packet of a copied track: its time in milliseconds, size and hash.
struct CopiedPacket {
  double milliseconds;
  std::string sizeAndHash;
};
std::vector<CopiedPacket> packetsOf(const FileURL& url, const std::string& track);

/// How alike the first video tracks are, 1 being the same.
double similarity(const FileURL& film, const FileURL& reference);

/// Exports on the test's own thread.
class Exporting {
 public:
  const test::TemporaryFolder folder;

  /// The file that `source` becomes. Throws what the export throws; `std::runtime_error` if there
  /// is no session.
  FileURL exported(const FileURL& source, MediaFileType fileType);

  /// The description of the error; "no session"; or "no failure".
  std::string failureOf(const FileURL& source, MediaFileType fileType);

  bool hasSession(const FileURL& source);

 private:
  test::VirtualLoop loop_;
  LinuxAssetExporter exporter_{loop_, loop_, openMedia};
  int count_ = 0;
};

}  // namespace kestrivane::mediaTesting
