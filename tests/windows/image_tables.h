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

std::vector<Import> ImportsOf(HMODULE dll);
void Redirect(const Import& import, void* target);

// Names of what the DLL exports, in the order of the table.
std::vector<std::string> ExportNamesOf(HMODULE dll);
// Entries of its address table, those without a name included.
std::size_t ExportCountOf(HMODULE dll);

#endif  // QRN_TESTS_WINDOWS_IMAGE_TABLES_H_
