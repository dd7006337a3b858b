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

Program::Program() {
  Write("print-page", "#!/bin/sh\nexec \"$program\" \"$@\" --virtual-time\n");
  EXPECT_EQ(
      0, Shell("cp '" QRN_INPUTS "'/* .; mkdir tmp bin; chmod +x print-page; mv print-page bin"));
}

int Program::Shell(const std::string& command) const {
  const std::string setting = "cd '" + folder.Path("") +
                              "'; here=$PWD; export program='" QRN_PRINT_PAGE
                              "' TMPDIR=\"$here/tmp\" PATH=\"$here/bin:$PATH\"; ";
  const int status = std::system((setting + command).c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void Program::Write(const std::string& name, const std::string& bytes) const {
  std::ofstream(folder.Path(name), std::ios::binary) << bytes;
}

void Program::Run(const std::string& command) {
  const auto files = [this] {
    return std::distance(fs::directory_iterator(folder.Path("tmp")), {});
  };
  const auto filesBefore = files();
  exitCode = Shell("(" + command + ") >\"$here/out\" 2>\"$here/err\"");
  out = Contents(folder.Path("out"));
  err = Contents(folder.Path("err"));
  EXPECT_EQ(filesBefore, files()) << "temporary files stay";
}

void Program::Expect(int code, const std::string& command, const std::string& said) {
  Run(command);
  EXPECT_EQ(code, exitCode) << command << "\n" << out << err;
  EXPECT_NE(0u, Count(code == 0 ? out : err, said)) << command << "\n" << out << err;
  EXPECT_EQ(static_cast<std::size_t>(code), Count(err, "\n")) << command << "\n" << err;
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
