#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include "platform/linux/updates/Appcast.hpp"

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include <expat.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/updates/VersionOrder.hpp"

namespace kestrivane {
namespace {

// Names as the parser gives them: the namespace, a bar, the local name.
#define UPDATE_NAMESPACE "http://www.andymatuschak.org/xml-namespaces/sparkle|"

constexpr std::size_t maximumDepth = 32;

struct FreeParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

/// Collects items while the parser goes through the feed.
class Reader {
 public:
  explicit Reader(XML_Parser parser) : parser_(parser) {
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, &Reader::start, &Reader::end);
    XML_SetCharacterDataHandler(parser, &Reader::text);
    XML_SetStartDoctypeDeclHandler(parser, &Reader::documentType);
  }

  std::vector<AppcastItem> items;

 private:
  static Reader& of(void* data) { return *static_cast<Reader*>(data); }

  static void start(void* data, const XML_Char* name, const XML_Char** attributes) {
    Reader& reader = of(data);
    if (reader.path_.size() == maximumDepth) return reader.stop();
    reader.path_.emplace_back(name);
    reader.text_.clear();
    if (reader.isAt({"rss", "channel", "item"})) reader.item_ = AppcastItem{};
    if (reader.isAt({"rss", "channel", "item", "enclosure"})) reader.takeEnclosure(attributes);
  }

  static void end(void* data, const XML_Char*) {
    Reader& reader = of(data);
    if (reader.isAt({"rss", "channel", "item"})) {
      reader.finishItem();
    } else {
      reader.takeElement();
    }
    reader.path_.pop_back();
    reader.text_.clear();
  }

  static void text(void* data, const XML_Char* characters, int count) {
    of(data).text_.append(characters, static_cast<std::size_t>(count));
  }

  static void documentType(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    of(data).stop();
  }

  void stop() { XML_StopParser(parser_, XML_FALSE); }

  bool isAt(std::initializer_list<std::string_view> names) const {
    return std::ranges::equal(path_, names);
  }

  void takeEnclosure(const XML_Char** attributes) {
    for (; *attributes != nullptr; attributes += 2) {
      const std::string_view name = attributes[0], value = attributes[1];
      if (name == "url") item_.address = value;
      if (name == "length") std::from_chars(value.begin(), value.end(), item_.length);
      if (name == UPDATE_NAMESPACE "edSignature") item_.signature = value;
      if (name == UPDATE_NAMESPACE "os") item_.system = value;
      if (name == UPDATE_NAMESPACE "version") item_.version = value;
      if (name == UPDATE_NAMESPACE "shortVersionString") item_.displayVersion = value;
    }
  }

  void takeElement() {
    const std::string name = std::move(path_.back());
    path_.back().clear();
    if (!isAt({"rss", "channel", "item", ""})) return;
    if (name == UPDATE_NAMESPACE "version") item_.version = text_;
    if (name == UPDATE_NAMESPACE "shortVersionString") item_.displayVersion = text_;
    if (name == UPDATE_NAMESPACE "channel") item_.channel = text_;
  }

  void finishItem() {
    if (item_.version.empty() || item_.address.empty()) return;
    if (item_.displayVersion.empty()) item_.displayVersion = item_.version;
    items.push_back(std::move(item_));
  }

  XML_Parser parser_;
  std::vector<std::string> path_;
  std::string text_;
  AppcastItem item_;
};

}  // namespace

std::vector<AppcastItem> parseAppcast(std::string_view feed) {
  const Parser parser(XML_ParserCreateNS(nullptr, '|'));
  if (!parser) throw std::bad_alloc();
  if (feed.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    throw PlatformError(XML_ERROR_NO_MEMORY, "The list of updates is too long.");
  Reader reader(parser.get());
  const auto length = static_cast<int>(feed.size());
  if (XML_Parse(parser.get(), feed.data(), length, XML_TRUE) != XML_STATUS_OK) {
    const XML_Error error = XML_GetErrorCode(parser.get());
    throw PlatformError(error, std::string("The list of updates is damaged: ")
                                   .append(XML_ErrorString(error))
                                   .append(", line ")
                                   .append(std::to_string(XML_GetCurrentLineNumber(parser.get())))
                                   .append("."));
  }
  return std::move(reader.items);
}

std::optional<AppcastItem> newestUpdate(const std::vector<AppcastItem>& items,
                                        std::string_view currentVersion) {
  std::optional<AppcastItem> newest;
  for (const AppcastItem& item : items) {
    if (item.system != "linux" || !item.channel.empty() || item.signature.empty()) continue;
    if (compareVersions(item.version, newest ? newest->version : currentVersion) > 0) newest = item;
  }
  return newest;
}

}  // namespace kestrivane
