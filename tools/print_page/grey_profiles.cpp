#include "print_page/grey_profiles.h"

#include <lcms2.h>

#include <cerrno>
#include <fstream>
#include <memory>

namespace qrn::tool {
namespace {

// What Ghostscript itself converts with.
constexpr const char* kRgbProfile = QRN_GS_PROFILES "/default_rgb.icc";
constexpr const char* kCmykProfile = QRN_GS_PROFILES "/default_cmyk.icc";

constexpr const char* kRgbLink = "rgb.icc";
constexpr const char* kGreyLink = "grey.icc";
constexpr cmsUInt32Number kGridPoints = 33;  // along each of red, green and blue
constexpr cmsUInt16Number kFull = 0xFFFF;

template <auto close>
struct Closer {
  template <class Handle>
  void operator()(Handle* handle) const {
    close(handle);
  }
};
using Profile = std::unique_ptr<void, Closer<cmsCloseProfile>>;
using Transform = std::unique_ptr<void, Closer<cmsDeleteTransform>>;
using Pipeline = std::unique_ptr<cmsPipeline, Closer<cmsPipelineFree>>;
using Text = std::unique_ptr<cmsMLU, Closer<cmsMLUfree>>;

void InkOfGrey(cmsUInt16Number grey, cmsUInt16Number* inks) {
  std::fill_n(inks, kInksOfMixture, cmsUInt16Number{0});
  inks[kBlackOfMixture] = static_cast<cmsUInt16Number>(kFull - grey);
}

int SampleGrey(const cmsUInt16Number* grey, cmsUInt16Number* inks, void*) {
  InkOfGrey(*grey, inks);
  return 1;
}

// Between two grey points of the grid the link keeps to the straight line from one to the other, so
// that grey stays black ink there too.
int SampleRgb(const cmsUInt16Number* rgb, cmsUInt16Number* inks, void* transform) {
  if (rgb[0] == rgb[1] && rgb[1] == rgb[2]) {
    InkOfGrey(rgb[0], inks);
  } else {
    cmsDoTransform(transform, rgb, inks, 1);
  }
  return 1;
}

// As Ghostscript converts colours that the links leave alone.
Transform RgbToCmyk() {
  const Profile rgb(cmsOpenProfileFromFile(kRgbProfile, "r"));
  const Profile cmyk(cmsOpenProfileFromFile(kCmykProfile, "r"));
  if (rgb == nullptr || cmyk == nullptr) return nullptr;
  return Transform(cmsCreateTransform(
      rgb.get(), TYPE_RGB_16, cmyk.get(), TYPE_CMYK_16, INTENT_RELATIVE_COLORIMETRIC,
      cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE));
}

// Writes a link from `source` with `channels` channels to four inks.
bool WriteLink(const std::string& path, cmsColorSpaceSignature source, cmsUInt32Number channels,
               cmsUInt32Number gridPoints, cmsSAMPLER16 sample, void* transform) {
  const Pipeline pipeline(cmsPipelineAlloc(nullptr, channels, kInksOfMixture));
  cmsStage* stage = cmsStageAllocCLut16bit(nullptr, gridPoints, channels, kInksOfMixture, nullptr);
  const Profile link(cmsCreateProfilePlaceholder(nullptr));
  const Text name(cmsMLUalloc(nullptr, 1));
  if (pipeline == nullptr || stage == nullptr || link == nullptr || name == nullptr) return false;
  cmsStageSampleCLut16bit(stage, sample, transform, 0);
  cmsPipelineInsertStage(pipeline.get(), cmsAT_END, stage);  // owns the stage from now on
  cmsMLUsetASCII(name.get(), "en", "US", "grey to black ink");
  cmsSetProfileVersion(link.get(), 2.1);
  cmsSetDeviceClass(link.get(), cmsSigLinkClass);
  cmsSetColorSpace(link.get(), source);
  cmsSetPCS(link.get(), cmsSigCmykData);
  return cmsWriteTag(link.get(), cmsSigAToB0Tag, pipeline.get()) != 0 &&
         cmsWriteTag(link.get(), cmsSigProfileDescriptionTag, name.get()) != 0 &&
         cmsSaveProfileToFile(link.get(), path.c_str()) != 0;
}

// A line of a list names the objects and their profile; then follow the intent, black point
// compensation, and that a profile of the object's own is passed over.
bool WriteList(const std::string& path, bool pictures) {
  std::ofstream list(path);
  for (const char* objects : {"Graphic", "Text", "Image"}) {
    list << objects << "_GRAY " << kGreyLink << " 1 1 1\n";
    if (pictures || objects != std::string("Image"))
      list << objects << "_RGB " << kRgbLink << " 1 1 1\n";
  }
  return list.flush().good();
}

}  // namespace

bool WriteGreyProfiles(const RenderFolder& folder, std::string* error) {
  const Transform transform = RgbToCmyk();
  if (transform == nullptr) {
    *error = "cannot read the colour profiles of Ghostscript in " QRN_GS_PROFILES;
    return false;
  }
  errno = 0;
  const auto list = [&folder](GreyRule rule) { return folder.Path(GreyListName(rule)); };
  if (WriteLink(folder.Path(kRgbLink), cmsSigRgbData, 3, kGridPoints, SampleRgb, transform.get()) &&
      WriteLink(folder.Path(kGreyLink), cmsSigGrayData, 1, 2, SampleGrey, nullptr) &&
      WriteList(list(GreyRule::kTextAndLines), false) && WriteList(list(GreyRule::kAll), true)) {
    return true;
  }
  *error = folder.CannotWrite(errno);
  return false;
}

InkMixtures GreyMixtures() {
  InkMixtures mixtures{};
  const Transform transform = RgbToCmyk();
  for (std::size_t grey = 0; grey < mixtures.size(); ++grey) {
    const auto value = static_cast<cmsUInt16Number>(grey * 257);
    const std::array<cmsUInt16Number, 3> rgb = {value, value, value};
    std::array<cmsUInt16Number, kInksOfMixture> inks{};
    if (transform != nullptr) cmsDoTransform(transform.get(), rgb.data(), inks.data(), 1);
    for (std::size_t ink = 0; ink < kInksOfMixture; ++ink)
      mixtures[grey][ink] = static_cast<std::uint8_t>((inks[ink] + 128) / 257);
  }
  return mixtures;
}

std::string GreyListName(GreyRule rule) {
  switch (rule) {
    case GreyRule::kTextAndLines:
      return "grey-text-and-lines";
    case GreyRule::kAll:
      return "grey-all";
    case GreyRule::kNone:
    case GreyRule::kBlended:
      break;
  }
  return "";
}

}  // namespace qrn::tool
