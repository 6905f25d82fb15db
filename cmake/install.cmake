# Installation rules, included by the top-level CMakeLists.txt.
include(CMakePackageConfigHelpers)
set(ZAR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zar)
set(ZAR_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set_target_properties(zar_core PROPERTIES EXPORT_NAME zar)
install(TARGETS zar_core EXPORT zarTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS zar_avx LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# libzar_core.so for -lzar_core; libblas.so.3 and libcblas.so.3 for programs
# built against the reference BLAS.
foreach(link libzar_core.so libblas.so.3 libcblas.so.3)
  install(CODE "file(CREATE_LINK libzar_core.so.2 \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/${link}\" SYMBOLIC)")
endforeach()
install(DIRECTORY ${CMAKE_SOURCE_DIR}/core/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# CMake package: find_package(zar) gives zar::zar (the core; 32-bit only).
install(EXPORT zarTargets NAMESPACE zar:: DESTINATION ${ZAR_CMAKE_DIR})
file(WRITE ${CMAKE_BINARY_DIR}/zarConfig.cmake
  "include(\${CMAKE_CURRENT_LIST_DIR}/zarTargets.cmake)\n")
write_basic_package_version_file(${CMAKE_BINARY_DIR}/zarConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/zarConfig.cmake ${CMAKE_BINARY_DIR}/zarConfigVersion.cmake DESTINATION ${ZAR_CMAKE_DIR})

# pkg-config: the prefix is found from the .pc file's own place, so the
# installed tree may be moved (or installed with --prefix / DESTDIR).
file(RELATIVE_PATH ZAR_PC_TO_PREFIX /${ZAR_PKGCONFIG_DIR} /)
string(REGEX REPLACE "/$" "" ZAR_PC_TO_PREFIX "${ZAR_PC_TO_PREFIX}")
configure_file(${CMAKE_SOURCE_DIR}/cmake/zar.pc.in ${CMAKE_BINARY_DIR}/zar.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/zar.pc DESTINATION ${ZAR_PKGCONFIG_DIR})
