#include "print_page/document_plan.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace qrn::tool {
namespace {

constexpr std::uint32_t kPagesMax = 1'000'000;

DocumentPlan PlanOf(const std::vector<GreyRule>& rules) {
  DocumentPlan plan;
  plan.pages = static_cast<std::uint32_t>(rules.size());
  for (std::uint32_t page = 1; page <= plan.pages; ++page) {
    const GreyRule rule = rules[page - 1];
    if (plan.runs.empty() || plan.runs.back().rule != rule) plan.runs.push_back({page, page, rule});
    plan.runs.back().last = page;
  }
  if (!plan.runs.empty()) plan.runs.back().last = 0;
  return plan;
}

}  // namespace

DocumentPlan WholeDocument(GreyRule rule) { return {0, {{1, 0, rule}}}; }

DocumentPlan PlanOfPostScript(const std::vector<bool>& colourPictures) {
  const bool grey =
      !colourPictures.empty() &&
      std::find(colourPictures.begin(), colourPictures.end(), true) == colourPictures.end();
  return WholeDocument(grey ? GreyRule::kAll : GreyRule::kTextAndLines);
}

DocumentPlan PlanOfPdf(const std::string& info, const std::vector<bool>& colourPictures) {
  std::vector<GreyRule> rules;
  std::istringstream lines(info);
  for (std::string line; std::getline(lines, line);) {
    unsigned number = 0;
    if (std::sscanf(line.c_str(), " File has %u page", &number) == 1 && number <= kPagesMax)
      rules.assign(number, GreyRule::kBlended);
    if (std::sscanf(line.c_str(), "Page %u MediaBox", &number) != 1) continue;
    if (number == 0 || number > rules.size()) continue;
    if (line.find("transparency") != std::string::npos) continue;
    const bool grey = number <= colourPictures.size() && !colourPictures[number - 1];
    rules[number - 1] = grey ? GreyRule::kAll : GreyRule::kTextAndLines;
  }
  return rules.empty() ? WholeDocument(GreyRule::kBlended) : PlanOf(rules);
}

DocumentPlan PlanOfPictures(const std::string& types) {
  std::vector<GreyRule> rules;
  std::istringstream words(types);
  for (std::string type; words >> type;) {
    const bool grey = type == "Grayscale" || type == "Bilevel";
    rules.push_back(grey ? GreyRule::kAll : GreyRule::kNone);
  }
  return rules.empty() ? WholeDocument(GreyRule::kNone) : PlanOf(rules);
}

}  // namespace qrn::tool
