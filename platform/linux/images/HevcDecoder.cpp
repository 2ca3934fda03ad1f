#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/HevcDecoder.hpp"

#include <algorithm>
#include <thread>

#include <libde265/de265.h>

#include "platform/linux/images/HeifBytes.hpp"
#include "platform/linux/images/LibraryHandle.hpp"

namespace kestrivane::heic {
namespace {

using Context = LibraryHandle<de265_decoder_context, de265_free_decoder>;

constexpr int maximumThreads = 8;

[[noreturn]] void failAsDamaged() {
  throw ImageError("the HEIC's data is damaged");
}

/// Whether the picture is whole nevertheless.
bool isHarmless(de265_error warning) {
  return warning == DE265_OK || warning == DE265_WARNING_NO_WPP_CANNOT_USE_MULTITHREADING ||
         warning == DE265_WARNING_NUMBER_OF_THREADS_LIMITED_TO_MAXIMUM ||
         warning == DE265_WARNING_SPS_MISSING_CANNOT_DECODE_SEI;
}

/// Throws unless this is no slice, or one of a picture that needs no other (nal_unit_type, ITU-T
/// H.265, 7.4.2.2).
void checkKind(std::span<const std::uint8_t> unit) {
  const unsigned type = HeifBytes(unit).u8() >> 1 & 63;
  const bool isSlice = type < 32;
  const bool isIndependent = type >= 16 && type <= 21;
  if (isSlice && !isIndependent) throw ImageError("the HEIC's picture depends on another");
}

class Decoder {
 public:
  Decoder(const HevcFormat& format, HevcThreads threads)
      : format_(format), context_(de265_new_decoder()) {
    if (!context_) throw std::bad_alloc();
    de265_set_parameter_bool(context_.get(), DE265_DECODER_PARAM_SUPPRESS_FAULTY_PICTURES, 1);
    // With its last filter, SAO, libde265 would draw in memory of its own and ask for planes only
    // for the filter's result. So the filter is turned on again when the planes have been made.
    de265_set_parameter_bool(context_.get(), DE265_DECODER_PARAM_DISABLE_SAO, 1);
    de265_image_allocation functions{};
    functions.get_buffer = [](de265_decoder_context*, de265_image_spec* spec, de265_image* image,
                              void* self) {
      return static_cast<Decoder*>(self)->makePlanes(*spec, image) ? 1 : 0;
    };
    functions.release_buffer = [](de265_decoder_context*, de265_image* image, void* self) {
      static_cast<Decoder*>(self)->take(image);
    };
    de265_set_image_allocation_functions(context_.get(), &functions, this);
    // Without a thread of its own libde265 applies SAO in place, where it may blur the marks.
    const auto useful =
        threads == HevcThreads::one ? 1 : static_cast<int>(std::thread::hardware_concurrency());
    if (de265_start_worker_threads(context_.get(), std::clamp(useful, 1, maximumThreads)) !=
        DE265_OK)
      throw ImageError("the HEIC's decoder cannot start");
  }

  void push(std::span<const std::uint8_t> unit) {
    if (de265_push_NAL(context_.get(), unit.data(), static_cast<int>(unit.size()), 0, nullptr) !=
        DE265_OK)
      failAsDamaged();
  }

  std::unique_ptr<HevcPicture> decode() {
    if (de265_flush_data(context_.get()) != DE265_OK) failAsDamaged();
    std::unique_ptr<HevcPicture> picture;
    for (int more = 1; more != 0;) {
      if (de265_decode(context_.get(), &more) != DE265_OK) failAsDamaged();
      const de265_image* const image = de265_get_next_picture(context_.get());
      if (image == nullptr) continue;
      if (picture) throw ImageError("the HEIC has several pictures in one");
      const HevcSignal signal{de265_get_image_full_range_flag(image) != 0,
                              de265_get_image_matrix_coefficients(image)};
      picture = take(image);
      if (!picture) failAsDamaged();
      picture->signal = signal;
    }
    for (de265_error warning = DE265_OK; (warning = de265_get_warning(context_.get())) != DE265_OK;)
      if (!isHarmless(warning)) failAsDamaged();
    if (!picture || picture->missesBlocks()) failAsDamaged();
    return picture;
  }

 private:
  /// Whether the picture is of the expected format and there is memory for it. Called for the
  /// picture, and once more for what becomes of it by SAO when all slices have been decoded.
  bool makePlanes(const de265_image_spec& spec, de265_image* image) noexcept try {
    const HevcFormat found{static_cast<std::size_t>(std::max(spec.visible_width, 0)),
                           static_cast<std::size_t>(std::max(spec.visible_height, 0)),
                           static_cast<Chroma>(de265_get_chroma_format(image)),
                           de265_get_bits_per_pixel(image, 0)};
    if (found != format_ ||
        (found.chroma != Chroma::none && de265_get_bits_per_pixel(image, 1) != found.bits))
      return false;
    checkArea(static_cast<std::uint64_t>(spec.width), static_cast<std::uint64_t>(spec.height));
    if (!pictures_.empty() && pictures_.front()->missesBlocks()) return false;
    const HevcWindow window{
        static_cast<std::size_t>(spec.width), static_cast<std::size_t>(spec.height),
        static_cast<std::size_t>(spec.crop_left), static_cast<std::size_t>(spec.crop_top)};
    auto& picture = *pictures_.emplace_back(std::make_unique<HevcPicture>(format_, window));
    for (std::size_t i = 0; i < 3; ++i)
      de265_set_image_plane(image, static_cast<int>(i), picture.codedPlane(i),
                            static_cast<int>(picture.stride(i)), &picture);
    de265_set_parameter_bool(context_.get(), DE265_DECODER_PARAM_DISABLE_SAO, 0);
    return true;
  } catch (const std::exception&) {
    return false;
  }

  /// The planes of that image, if they have not been taken before.
  std::unique_ptr<HevcPicture> take(const de265_image* image) {
    const void* const planes = de265_get_image_plane_user_data(image, 0);
    const auto found = std::ranges::find(pictures_, planes, &std::unique_ptr<HevcPicture>::get);
    if (found == pictures_.end()) return nullptr;
    std::unique_ptr<HevcPicture> taken = std::move(*found);
    pictures_.erase(found);
    return taken;
  }

  HevcFormat format_;
  std::vector<std::unique_ptr<HevcPicture>> pictures_;  // those that libde265 draws in
  Context context_;                                     // which gives them back at its end
};

}  // namespace

HevcConfiguration HevcConfiguration::parse(std::span<const std::uint8_t> record) {
  HeifBytes bytes(record);
  HevcConfiguration configuration;
  bytes.take(16);  // profile, level and how the picture is divided
  configuration.chroma = static_cast<Chroma>(bytes.u8() & 3);
  configuration.bits = 8 + (bytes.u8() & 7);
  bytes.take(3);  // bits of differences, and frame rate
  configuration.lengthBytes = (bytes.u8() & 3) + std::size_t{1};
  for (std::uint8_t arrays = bytes.u8(); arrays > 0; --arrays) {
    bytes.take(1);  // their type
    for (std::uint16_t units = bytes.u16(); units > 0; --units)
      configuration.parameterSets.push_back(bytes.take(bytes.u16()));
  }
  return configuration;
}

std::unique_ptr<HevcPicture> decodeHevc(const HevcConfiguration& configuration,
                                        std::span<const std::uint8_t> units,
                                        const HevcFormat& format, HevcThreads threads) {
  Decoder decoder(format, threads);
  for (const auto parameterSet : configuration.parameterSets)
    decoder.push(parameterSet);
  HeifBytes bytes(units);
  while (!bytes.empty()) {
    const auto unit = bytes.take(bytes.number(configuration.lengthBytes));
    checkKind(unit);
    decoder.push(unit);
  }
  return decoder.decode();
}

}  // namespace kestrivane::heic
