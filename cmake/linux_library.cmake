# The same twelve exports twice, as a shared and as a static library, and what cmake --install puts beside them for hosts:
# the header, a CMake package (find_package(qrn_driver), targets qrn::driver and qrn::driver_static) and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

add_library(qrn_driver SHARED $<TARGET_OBJECTS:qrn_core>)
target_link_libraries(qrn_driver PRIVATE qrn_options Threads::Threads)
set_target_properties(qrn_driver PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                            EXPORT_NAME driver)
# Stays loaded once it is: a host that unloads it in the middle of a job would take the code from under its thread.
target_link_options(qrn_driver PRIVATE -Wl,-z,nodelete)
add_library(qrn_driver_static STATIC $<TARGET_OBJECTS:qrn_core>)
# A host in C does not bring the C++ library along.
target_link_libraries(qrn_driver_static PUBLIC Threads::Threads INTERFACE $<$<LINK_LANGUAGE:C>:stdc++>)
set_target_properties(qrn_driver_static PROPERTIES EXPORT_NAME driver_static)
foreach(library qrn_driver qrn_driver_static)
  set_target_properties(${library} PROPERTIES OUTPUT_NAME QRN_DriverT62804 LINKER_LANGUAGE CXX)
  target_include_directories(${library} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
endforeach()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/qrn_driver)
# What a host needs; programs are components of their own.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME library)
install(TARGETS qrn_driver qrn_driver_static EXPORT qrn_driver-targets
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT qrn_driver-targets NAMESPACE qrn:: DESTINATION ${package})
install(FILES ${PROJECT_SOURCE_DIR}/include/qrn_driver.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(config ${CMAKE_CURRENT_BINARY_DIR}/qrn_driver-config.cmake)
file(WRITE ${config} "include(CMakeFindDependencyMacro)\nfind_dependency(Threads)\n"
                     "include(\${CMAKE_CURRENT_LIST_DIR}/qrn_driver-targets.cmake)\n")
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/qrn_driver-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${config} ${CMAKE_CURRENT_BINARY_DIR}/qrn_driver-config-version.cmake DESTINATION ${package})

# Paths from where the file is found, so that the tree may be moved, or installed under another prefix than configured.
set(pkg_config ${CMAKE_CURRENT_BINARY_DIR}/qrn_driver.pc)
file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" up ${up})
file(WRITE ${pkg_config} "prefix=\${pcfiledir}/${up}
libdir=\${prefix}/${CMAKE_INSTALL_LIBDIR}
includedir=\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}

Name: QRN_DriverT62804
Description: Driver library for a large-format inkjet printer
Version: ${PROJECT_VERSION}
Libs: -L\${libdir} -lQRN_DriverT62804
Libs.private: -lstdc++ -pthread
Cflags: -I\${includedir}
")
install(FILES ${pkg_config} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
