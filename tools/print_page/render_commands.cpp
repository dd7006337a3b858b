#include "print_page/render_commands.h"

namespace qrn::tool {

namespace {

// `device`: the options that name and set the output device.
Command GhostscriptCommand(const Command& device, const std::string& document, const PageRun& run,
                           std::uint32_t resolution) {
  // Without the last it would print what it can of a damaged file.
  Command command = {"gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dPDFSTOPONERROR"};
  command.insert(command.end(), device.begin(), device.end());
  command.insert(command.end(),
                 {"-sPAPERSIZE=a4", "-dEPSCrop", "-r" + std::to_string(resolution) + "x360",
                  "-sstdout=%stderr",  // messages; the pages alone go to the pipe
                  "-sOutputFile=-"});
  if (run.first > 1) command.push_back("-dFirstPage=" + std::to_string(run.first));
  if (run.last > 0) command.push_back("-dLastPage=" + std::to_string(run.last));
  command.insert(command.end(), {"-f", document});
  return command;
}

}  // namespace

Command RenderCommand(const std::string& document, const PageRun& run, std::uint32_t resolution) {
  Command device = {"-sDEVICE=cups", "-dcupsColorSpace=6",
                    "-dcupsBitsPerColor=8",  // with fewer it applies a transfer curve of its own
                    "-dcupsColorOrder=1"};
  const std::string list = GreyListName(run.rule);
  if (!list.empty()) device.push_back("-sSourceObjectICC=" + list);
  return GhostscriptCommand(device, document, run, resolution);
}

Command TagCommand(const std::string& document, const PageRun& run, std::uint32_t resolution) {
  return GhostscriptCommand({"-sDEVICE=bitrgbtags"}, document, run, resolution);
}

Command PdfInfoCommand() {
  return {"gs", "-q",         "-dSAFER", "-dBATCH", "-dNODISPLAY", "-dPDFINFO", "-sstdout=%stderr",
          "-f", kDocumentName};
}

// Transparency is laid on white, in each of the file's pictures. The background comes before the
// picture: given after it, the program keeps silent about damage.
Command PictureCommand(const std::string& format) {
  return {
      "gm",      "convert", "-background", "white",   format + ":" + kDocumentName,
      "-extent", "0x0",     "+matte",      "-format", "%r\n",
      "-write",  "info:-",  "-compress",   "Zip",     std::string("pdf:") + kPictureDocumentName};
}

}  // namespace qrn::tool
