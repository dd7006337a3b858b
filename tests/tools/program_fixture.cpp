#include "tools/program_fixture.h"

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace qrn::tool {

std::string Contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

void Program::Run(const std::string& arguments, const std::string& before) {
  const auto files = [this] {
    return std::distance(fs::directory_iterator(folder.Path("tmp")), {});
  };
  const auto filesBefore = files();
  const std::string command = "cd '" + folder.Path("") + "' && here=\"$PWD\" && " +
                              "export TMPDIR=\"$here/tmp\" && " + before +
                              " '" QRN_PRINT_PAGE "' " + arguments +
                              " --virtual-time >\"$here/out\" 2>\"$here/err\"";
  const int status = std::system(command.c_str());
  exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  out = Contents(folder.Path("out"));
  err = Contents(folder.Path("err"));
  EXPECT_EQ(filesBefore, files()) << "temporary files stay";
}

void Program::Write(const std::string& name, const std::string& bytes) {
  std::ofstream(folder.Path(name), std::ios::binary) << bytes;
}

void Program::ExpectExit(int code, const std::string& said) const {
  EXPECT_EQ(code, exitCode) << out << err;
  EXPECT_NE(std::string::npos, (code == 0 ? out : err).find(said)) << out << err;
  EXPECT_EQ(static_cast<std::size_t>(code), Count(err, "\n")) << err;
}

std::vector<std::array<double, 4>> Program::InkOnPaper() const {
  std::vector<std::array<double, 4>> pages;
  for (std::size_t at = 0; (at = out.find("ink  ", at)) != std::string::npos; ++at) {
    auto& ink = pages.emplace_back();
    EXPECT_EQ(4, std::sscanf(out.c_str() + at, "ink C %lf %%, M %lf %%, Y %lf %%, K %lf %%",
                             &ink[0], &ink[1], &ink[2], &ink[3]));
  }
  return pages;
}

}  // namespace qrn::tool
