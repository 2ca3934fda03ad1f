#include "converters/FFmpegConverter.hpp"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "async/RunOn.hpp"
#include "engine/ConversionError.hpp"
#include "platform/Unicode.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

constexpr std::string_view toolName = "ffmpeg";

std::vector<std::string> toolArguments(const FileURL& sourceURL, const FileURL& destinationURL) {
  std::vector<std::string> arguments = {"-y", "-i", sourceURL.path()};
  if (lowercased(destinationURL.pathExtension()) == "mp3") {
    // No video; 44,100 Hz, two channels, 192 kbit/s.
    arguments.insert(arguments.end(), {"-vn", "-ar", "44100", "-ac", "2", "-b:a", "192k"});
  }
  arguments.push_back(destinationURL.path());
  return arguments;
}

struct ToolRun {
  FileURL tool;
  FileURL sourceURL;
  FileURL destinationURL;
  std::string failureText;
};

/// The tool exits with status 0 also when the end of its output did not fit on the disk, and when
/// the source could not be read to its end.
bool succeeds(const ToolRun& run, const FFmpegConverter::Services& services) {
  return services.process.run(run.tool, toolArguments(run.sourceURL, run.destinationURL)) == 0 &&
         services.fileManager.hasRoom(run.destinationURL.deletingLastPathComponent()) &&
         !services.mediaInspector.isCutShort(run.destinationURL, run.sourceURL);
}

/// A failure of the tool is described twice over: as the error that it is, and as the reason of the
/// one that is thrown.
void runTool(const ToolRun& run, const FFmpegConverter::Services& services) {
  try {
    if (!succeeds(run, services)) throw ConversionError::conversionFailed(run.failureText);
  } catch (...) {
    throw ConversionError::conversionFailed(localizedDescription(std::current_exception()));
  }
}

}  // namespace

FFmpegConverter::FFmpegConverter(const Services& services)
    : services_(services),
      videoExtensions_{"webm", "mp4", "mov", "m4v", "mkv", "avi", "flv"},
      audioExtensions_{"mp3", "wav", "m4a"},
      logger_(services.log.makeLogger(logSubsystem, "FFmpegConverter")) {}

bool FFmpegConverter::canConvert(std::string_view from, std::string_view to) const {
  const std::string source = lowercased(from);
  const std::string target = lowercased(to);
  if (source == "webm" || target == "webm") return true;
  return target == "mp3" && std::ranges::find(videoExtensions_, source) != videoExtensions_.end();
}

Task<void> FFmpegConverter::convert(FileURL sourceURL, FileURL destinationURL) const {
  const ToolRun run = {findTool(), std::move(sourceURL), std::move(destinationURL),
                       L10n::choose("Error processing WebM.", "Ошибка при обработке WebM.")};
  const auto work = [run, services = services_] { runTool(run, services); };
  co_await runOn(services_.encodingQueue, work);
}

FileURL FFmpegConverter::findTool() const {
  const auto exists = [this](const std::optional<FileURL>& url) {
    return url && services_.fileManager.kindOfItem(*url) != ItemKind::none;
  };
  std::optional<FileURL> tool = services_.bundle.auxiliaryExecutable(toolName);
  if (!exists(tool)) tool = services_.bundle.resource(toolName);
  if (!exists(tool)) {
    throw ConversionError::conversionFailed(
        L10n::choose("Internal conversion component is missing.",
                     "Внутренний компонент конвертации отсутствует."));
  }
  return *tool;
}

}  // namespace kestrivane
