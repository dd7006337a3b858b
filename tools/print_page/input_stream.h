// The bytes of an input, whatever it is: a file, a pipe, standard input.
#ifndef QRN_TOOLS_PRINT_PAGE_INPUT_STREAM_H_
#define QRN_TOOLS_PRINT_PAGE_INPUT_STREAM_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "print_page/render_folder.h"

namespace qrn::tool {

class InputStream {
 public:
  // `path`: "-" = standard input. False, with a reason, when it cannot be opened or is empty.
  bool Open(const std::string& path, std::string* error);
  // The bytes that it begins with, up to kKindBytes. They are read again by what follows.
  const std::string& FirstBytes() const { return first_; }
  // The next bytes, 0 at the end, negative on an error.
  std::ptrdiff_t Read(std::uint8_t* buffer, std::size_t bytes);
  // Makes the whole input a file of this name there, in place of reading it: a link where it is a
  // file already, else a copy. False, with a reason, when it cannot.
  bool Place(const RenderFolder& folder, const std::string& name, std::string* error);

 private:
  struct Close {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };

  std::string FileBehind() const;
  int Copy(const std::string& target);

  std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
  std::string first_;
  std::size_t taken_ = 0;  // of the first bytes, by reading
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_INPUT_STREAM_H_
