#include "tests/platform/media/MediaTesting.hpp"

#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"

namespace kestrivane::mediaTesting {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    while (line.ends_with('|'))
      line.pop_back();
    if (!line.empty()) lines.push_back(std::move(line));
  }
  return lines;
}

std::string quoted(const FileURL& url) {
  return "'" + url.path() + "'";
}

Task<bool> findsSession(const AssetExporter* exporter, FileURL source) {
  const auto session = co_await exporter->createSession(source, ExportPreset::highestQuality);
  co_return session != nullptr;
}

Task<void> exportTo(const AssetExporter* exporter, FileURL source, FileURL destination,
                    MediaFileType fileType) {
  const auto session = co_await exporter->createSession(source, ExportPreset::highestQuality);
  if (!session) throw std::runtime_error("no session");
  co_await session->exportAsset(destination, fileType);
}

}  // namespace

FileURL sample(const std::string& name) {
  return FileURL(std::string(KESTRIVANE_SAMPLES) + "/media/" + name);
}

std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = ::popen(("exec </dev/null; " + command).c_str(), "re");
  if (pipe == nullptr) throw std::runtime_error("no process for " + command);
  std::array<char, 4096> buffer{};
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
    output.append(buffer.data(), count);
  EXPECT_EQ(::pclose(pipe), 0) << command;
  return output;
}

void make(const std::string& arguments) {
  outputOf("ffmpeg -y -v error " + arguments);
}

std::vector<std::string> probe(const FileURL& url, const std::string& tracks,
                               const std::string& entries) {
  const std::string selection = tracks.empty() ? "" : " -select_streams " + tracks;
  return linesOf(outputOf("ffprobe -v error" + selection + " -show_entries " + entries +
                          " -of compact=print_section=0:nokey=1 " + quoted(url)));
}

std::vector<CopiedPacket> packetsOf(const FileURL& url, const std::string& track) {
  std::vector<CopiedPacket> packets;
  double unit = 0;
  for (const std::string& line : linesOf(outputOf("ffmpeg -v error -copyts -i " + quoted(url) +
                                                  " -map 0:" + track + " -c copy -f framemd5 -"))) {
    int numerator = 0;
    int denominator = 0;
    if (std::sscanf(line.c_str(), "#tb 0: %d/%d", &numerator, &denominator) == 2)
      unit = 1000.0 * numerator / denominator;
    long long time = 0;
    int size = 0;
    std::array<char, 40> hash{};
    if (std::sscanf(line.c_str(), "0, %*d, %lld, %*d, %d, %32[0-9a-f]", &time, &size,
                    hash.data()) == 3)
      packets.push_back({static_cast<double>(time) * unit, std::to_string(size) + hash.data()});
  }
  return packets;
}

double similarity(const FileURL& film, const FileURL& reference) {
  const std::string found =
      outputOf("ffmpeg -v info -i " + quoted(film) + " -i " + quoted(reference) +
               " -lavfi "
               "'[0:v]format=yuv420p,settb=1/25,setpts=N[a];[1:v]format=yuv420p,settb=1/"
               "25,setpts=N[b];[a][b]ssim' -f "
               "null - 2>&1 "
               "| grep -o 'All:[0-9.]*'");
  return found.size() > 4 ? std::stod(found.substr(4)) : 0;
}

FileURL Exporting::exported(const FileURL& source, MediaFileType fileType) {
  const char* const extension = fileType == MediaFileType::mpeg4            ? ".mp4"
                                : fileType == MediaFileType::quickTimeMovie ? ".mov"
                                                                            : ".m4v";
  const FileURL destination = folder.url("exported" + std::to_string(++count_) + extension);
  test::runTask(loop_, exportTo(&exporter_, source, destination, fileType));
  return destination;
}

std::string Exporting::failureOf(const FileURL& source, MediaFileType fileType) {
  try {
    exported(source, fileType);
  } catch (const PlatformError& error) {
    return error.localizedDescription();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no failure";
}

bool Exporting::hasSession(const FileURL& source) {
  return test::runTask(loop_, findsSession(&exporter_, source));
}

}  // namespace kestrivane::mediaTesting
