// Colour profiles for Ghostscript by which what is grey prints with black ink alone. Without them
// grey of an RGB document becomes a mixture of four inks.
#ifndef QRN_TOOLS_PRINT_PAGE_GREY_PROFILES_H_
#define QRN_TOOLS_PRINT_PAGE_GREY_PROFILES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "print_page/render_folder.h"

namespace qrn::tool {

// Which objects of a page keep to black ink where they are grey, and how.
enum class GreyRule {
  kNone,          // as Ghostscript converts it
  kTextAndLines,  // and fills; a photograph mixes its greys
  kBlended,       // the same on a page that may blend colours, where links do not work: afterwards
  kAll,           // pictures too
};

constexpr std::size_t kInksOfMixture = 4, kBlackOfMixture = 3;
// C, M, Y, K that Ghostscript makes of each grey of RGB without the profiles.
using InkMixtures = std::array<std::array<std::uint8_t, kInksOfMixture>, 256>;
InkMixtures GreyMixtures();

// Writes the profiles, and lists that say which objects they are for. False, with a reason, when it
// cannot.
bool WriteGreyProfiles(const RenderFolder& folder, std::string* error);

// Name of the list for a rule in that folder; "" where there is none.
std::string GreyListName(GreyRule rule);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_GREY_PROFILES_H_
