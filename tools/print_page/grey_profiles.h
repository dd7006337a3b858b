// Colour profiles for Ghostscript by which what is grey prints with black ink alone. Without them
// grey of an RGB document becomes a mixture of four inks.
#ifndef QRN_TOOLS_PRINT_PAGE_GREY_PROFILES_H_
#define QRN_TOOLS_PRINT_PAGE_GREY_PROFILES_H_

#include <string>

#include "print_page/render_folder.h"

namespace qrn::tool {

// Which objects of a page keep to black ink where they are grey.
enum class GreyRule {
  kNone,          // as Ghostscript converts it
  kTextAndLines,  // and fills; a photograph mixes its greys
  kAll,           // pictures too
};

// Writes the profiles, and lists that say which objects they are for. False, with a reason, when it
// cannot.
bool WriteGreyProfiles(const RenderFolder& folder, std::string* error);

// Name of the list for a rule in that folder; "" for kNone.
std::string GreyListName(GreyRule rule);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_GREY_PROFILES_H_
