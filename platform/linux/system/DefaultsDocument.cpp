#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/DefaultsDocument.hpp"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include <nlohmann/json.hpp>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/Base64.hpp"

namespace kestrivane {
namespace {

// Keeps members in the order in which they stand.
using Json = nlohmann::ordered_json;

constexpr const char* dataMember = "data";

Json jsonOfData(const Data& data) {
  return {{dataMember, base64(data)}};
}

std::optional<Data> dataOfJson(const Json& value) {
  if (!value.is_object() || value.size() != 1) return std::nullopt;
  const auto text = value.find(dataMember);
  if (text == value.end() || !text->is_string()) return std::nullopt;
  return bytesOfBase64(text->get_ref<const std::string&>());
}

}  // namespace

struct DefaultsDocument::Values {
  Json json = Json::object();

  const Json* find(std::string_view key) const {
    const auto found = json.find(key);
    return found == json.end() ? nullptr : &*found;
  }
};

DefaultsDocument::DefaultsDocument() : values_(std::make_unique<Values>()) {}
DefaultsDocument::DefaultsDocument(const DefaultsDocument& other)
    : values_(std::make_unique<Values>(*other.values_)) {}
DefaultsDocument::DefaultsDocument(DefaultsDocument&&) noexcept = default;
DefaultsDocument& DefaultsDocument::operator=(DefaultsDocument&&) noexcept = default;
DefaultsDocument::~DefaultsDocument() = default;

DefaultsDocument DefaultsDocument::parse(std::string_view text) try {
  DefaultsDocument document;
  if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) return document;
  document.values_->json = Json::parse(text);
  if (!document.values_->json.is_object()) throw PlatformError(EBADMSG, "not a JSON object");
  return document;
} catch (const Json::exception& error) {
  throw PlatformError(EBADMSG, error.what());
}

std::string DefaultsDocument::text() const {
  constexpr int indentation = 2;
  return values_->json.dump(indentation) + "\n";
}

bool DefaultsDocument::contains(std::string_view key) const {
  return values_->find(key) != nullptr;
}

std::optional<bool> DefaultsDocument::boolean(std::string_view key) const {
  const Json* const value = values_->find(key);
  if (value == nullptr || !value->is_boolean()) return std::nullopt;
  return value->get<bool>();
}

std::optional<std::vector<Data>> DefaultsDocument::dataArray(std::string_view key) const {
  const Json* const value = values_->find(key);
  if (value == nullptr || !value->is_array()) return std::nullopt;
  std::vector<Data> array;
  for (const Json& element : *value) {
    std::optional<Data> data = dataOfJson(element);
    if (!data) return std::nullopt;
    array.push_back(std::move(*data));
  }
  return array;
}

void DefaultsDocument::set(std::string_view key, bool value) {
  values_->json[std::string(key)] = value;
}

void DefaultsDocument::set(std::string_view key, const std::vector<Data>& value) {
  Json array = Json::array();
  std::ranges::transform(value, std::back_inserter(array), jsonOfData);
  values_->json[std::string(key)] = std::move(array);
}

}  // namespace kestrivane
