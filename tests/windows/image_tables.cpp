#include "windows/image_tables.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

template <class T>
T* At(HMODULE dll, std::uint32_t offset) {
  return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(dll) + offset);
}

template <class T>
T* TableOf(HMODULE dll, std::size_t directory) {
  const auto* dos = At<const IMAGE_DOS_HEADER>(dll, 0);
  const auto* nt = At<const IMAGE_NT_HEADERS>(dll, static_cast<std::uint32_t>(dos->e_lfanew));
  return At<T>(dll, nt->OptionalHeader.DataDirectory[directory].VirtualAddress);
}

}  // namespace

std::vector<Import> ImportsOf(HMODULE dll) {
  std::vector<Import> imports;
  const auto* library = TableOf<const IMAGE_IMPORT_DESCRIPTOR>(dll, IMAGE_DIRECTORY_ENTRY_IMPORT);
  for (; library->Name != 0; ++library) {
    const auto* name = At<const IMAGE_THUNK_DATA>(dll, library->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(dll, library->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
      const auto* entry = At<const IMAGE_IMPORT_BY_NAME>(dll, name->u1.AddressOfData);
      imports.push_back({At<const char>(dll, library->Name), entry->Name,
                         reinterpret_cast<void**>(&slot->u1.Function)});
    }
  }
  return imports;
}

void Redirect(HMODULE dll, const std::vector<Replacement>& replacements) {
  const std::vector<Import> imports = ImportsOf(dll);
  for (const Replacement& replacement : replacements) {
    const auto import = std::find_if(imports.begin(), imports.end(), [&](const Import& candidate) {
      return candidate.name == replacement.name;
    });
    if (import == imports.end()) {
      std::fprintf(stderr, "the library does not import %s\n", replacement.name.c_str());
      std::_Exit(3);
    }
    DWORD before = 0;
    VirtualProtect(import->slot, sizeof *import->slot, PAGE_READWRITE, &before);
    *import->slot = replacement.target;
    VirtualProtect(import->slot, sizeof *import->slot, before, &before);
  }
}

std::vector<std::string> ExportNamesOf(HMODULE dll) {
  const auto& exports = *TableOf<const IMAGE_EXPORT_DIRECTORY>(dll, IMAGE_DIRECTORY_ENTRY_EXPORT);
  const auto* names = At<const std::uint32_t>(dll, exports.AddressOfNames);
  std::vector<std::string> result;
  for (std::uint32_t i = 0; i < exports.NumberOfNames; ++i)
    result.emplace_back(At<const char>(dll, names[i]));
  result.resize(exports.NumberOfFunctions);
  return result;
}
