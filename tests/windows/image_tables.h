// The import and export tables of a DLL that is loaded in this process.
#ifndef QRN_TESTS_WINDOWS_IMAGE_TABLES_H_
#define QRN_TESTS_WINDOWS_IMAGE_TABLES_H_

#include <windows.h>

#include <string>
#include <vector>

struct Import {
  std::string library, name;
  void** slot;  // where the DLL finds the address that it calls
};

struct Replacement {
  template <class Function>
  Replacement(const char* call, Function* function)
      : name(call), target(reinterpret_cast<void*>(function)) {}

  std::string name;
  void* target;
};

std::vector<Import> ImportsOf(HMODULE dll);
// Leads these calls of the DLL elsewhere. Fails the process when it does not import all of them.
void Redirect(HMODULE dll, const std::vector<Replacement>& replacements);

// Names of what the DLL exports, in the order of the table; "" for each that has none.
std::vector<std::string> ExportNamesOf(HMODULE dll);

#endif  // QRN_TESTS_WINDOWS_IMAGE_TABLES_H_
