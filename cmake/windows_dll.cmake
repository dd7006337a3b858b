# QRN_DriverT62804.dll: the core behind its twelve exports, a version resource, the debug symbols in a file beside it,
# an import library, and all of that in an install tree and a zip.
set(version_resource ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
configure_file(${PROJECT_SOURCE_DIR}/src/platform/win32/version.rc.in ${version_resource} @ONLY)
set(exports ${PROJECT_SOURCE_DIR}/src/host/exports.def)

add_library(qrn_driver SHARED $<TARGET_OBJECTS:qrn_core> ${qrn_dll_runtime}
                              ${version_resource})
set_target_properties(qrn_driver PROPERTIES OUTPUT_NAME QRN_DriverT62804 PREFIX "" LINKER_LANGUAGE CXX
                                            LINK_DEPENDS ${exports})
target_link_libraries(qrn_driver PRIVATE qrn_options setupapi shlwapi ${exports})
# Names without their @; no time of the build in the file, so that the same sources give the same bytes.
target_link_options(qrn_driver PRIVATE -Wl,--kill-at -Wl,--gc-sections -Wl,--no-insert-timestamp)
target_include_directories(qrn_driver INTERFACE ${PROJECT_SOURCE_DIR}/include)
set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
add_custom_command(TARGET qrn_driver POST_BUILD
  COMMAND ${objcopy} --only-keep-debug $<TARGET_FILE:qrn_driver> $<TARGET_FILE:qrn_driver>.debug
  COMMAND ${objcopy} --strip-all --add-gnu-debuglink=$<TARGET_FILE:qrn_driver>.debug $<TARGET_FILE:qrn_driver>
  VERBATIM)

# For hosts that link: calls by their decorated names, found in the DLL by the plain ones.
set(import_library ${CMAKE_CURRENT_BINARY_DIR}/import/libQRN_DriverT62804.dll.a)
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/import)
add_custom_command(OUTPUT ${import_library}
  COMMAND ${CMAKE_DLLTOOL} --kill-at --dllname QRN_DriverT62804.dll --input-def ${exports}
          --output-lib libQRN_DriverT62804.dll.a
  WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/import DEPENDS ${exports} VERBATIM)
add_custom_target(qrn_import_library ALL DEPENDS ${import_library})

install(FILES $<TARGET_FILE:qrn_driver> $<TARGET_FILE:qrn_driver>.debug DESTINATION bin)
install(FILES ${import_library} DESTINATION lib)
install(FILES ${PROJECT_SOURCE_DIR}/include/qrn_driver.h DESTINATION include)
install(FILES ${PROJECT_SOURCE_DIR}/docs/host-guide.md ${PROJECT_SOURCE_DIR}/docs/boxes.png DESTINATION docs)
install(FILES ${PROJECT_SOURCE_DIR}/examples/minimal_host.c DESTINATION examples)
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME QRN_DriverT62804-${PROJECT_VERSION})
include(CPack)
