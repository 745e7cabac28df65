# Version header, install rules and packages.  The version is the one of the
# top-level project() call; it reaches the SONAME, intrins/version.h,
# intrins.pc and the CMake package from here.
#
# cmake --install <build> --prefix P lays out
#   lib/libintrinsMD.so.1.0.0, .so.1 (SONAME), .so (development link); the same for libzamtf90md
#   lib/libintrins_gfortran.so           when the gfortran adapter is built
#   include/intrins.h, include/intrins/*.h (version.h among them)
#   lib/pkgconfig/intrins.pc, lib/cmake/intrins/ (find_package(intrins CONFIG))
#   share/doc/intrins/README.md
# and for Windows bin/*.dll, lib/*.dll.a (import libraries), lib/*.def.
# Components: runtime (shared libraries, README) and dev (everything else);
# cpack makes one Debian package of each, or one zip on Windows.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

configure_file(cmake/version.h.in "${PROJECT_BINARY_DIR}/include/intrins/version.h" @ONLY)
foreach(t intrins_objects intrins_static intrinsMD zamtf90md)
  target_include_directories(${t} PUBLIC "$<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>")
endforeach()

set_target_properties(intrinsMD zamtf90md PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
if(NOT WIN32)
  set_target_properties(intrinsMD PROPERTIES INSTALL_RPATH "$ORIGIN")  # finds libzamtf90md beside it
endif()

set(INTRINS_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/intrins")
install(TARGETS intrinsMD zamtf90md EXPORT intrinsTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY include/ "${PROJECT_BINARY_DIR}/include/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(FILES README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)

install(EXPORT intrinsTargets NAMESPACE intrins:: DESTINATION "${INTRINS_CMAKE_DIR}" COMPONENT dev)
configure_package_config_file(cmake/intrinsConfig.cmake.in "${PROJECT_BINARY_DIR}/intrinsConfig.cmake"
  INSTALL_DESTINATION "${INTRINS_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/intrinsConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/intrinsConfig.cmake" "${PROJECT_BINARY_DIR}/intrinsConfigVersion.cmake"
  DESTINATION "${INTRINS_CMAKE_DIR}" COMPONENT dev)

# intrins.pc names the prefix it is installed under, which is known only when
# installing (cmake --install --prefix, cpack).  The Windows zip unpacks
# anywhere: there the prefix is found from the file's own place.
if(WIN32)
  file(RELATIVE_PATH INTRINS_PC_PREFIX "/p/${CMAKE_INSTALL_LIBDIR}/pkgconfig" /p)
  string(REGEX REPLACE "/$" "" INTRINS_PC_PREFIX "\${pcfiledir}/${INTRINS_PC_PREFIX}")
  configure_file(cmake/intrins.pc.in "${PROJECT_BINARY_DIR}/intrins.pc" @ONLY)
else()
  set(INTRINS_PC_PREFIX "@INTRINS_PC_PREFIX@")
  configure_file(cmake/intrins.pc.in "${PROJECT_BINARY_DIR}/intrins.pc.in" @ONLY)
  install(CODE "set(INTRINS_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
    configure_file(\"${PROJECT_BINARY_DIR}/intrins.pc.in\" \"${PROJECT_BINARY_DIR}/intrins.pc\" @ONLY)"
    COMPONENT dev)
endif()
install(FILES "${PROJECT_BINARY_DIR}/intrins.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)

# Windows: the module-definition files beside the import libraries, for
# toolchains that make their own import library from them.
if(WIN32)
  target_link_options(zamtf90md PRIVATE "-Wl,--output-def,${PROJECT_BINARY_DIR}/libzamtf90md.def")
  install(FILES "${PROJECT_BINARY_DIR}/intrins.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RENAME libintrinsMD.def COMPONENT dev)
  install(FILES "${PROJECT_BINARY_DIR}/libzamtf90md.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev)
endif()

# Everything the install rules need built (make package builds only this).
add_custom_target(intrins_install_set)
add_dependencies(intrins_install_set intrinsMD zamtf90md)

# The gfortran adapter goes with the runtime libraries when it is part of the
# build; decided once every directory has been read.
function(intrins_install_adapter)
  if(TARGET intrins_gfortran)
    set_target_properties(intrins_gfortran PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(TARGETS intrins_gfortran
      RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
      LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT dev)
    add_dependencies(intrins_install_set intrins_gfortran)
  endif()
endfunction()
cmake_language(DEFER DIRECTORY "${PROJECT_SOURCE_DIR}" CALL intrins_install_adapter)

# Install into a temporary prefix and build examples/demo.c against it
# (native, unsanitized builds: the consumer is built with plain flags).
if(INTRINS_TESTS AND NOT CMAKE_CROSSCOMPILING AND NOT CMAKE_C_FLAGS MATCHES "sanitize")
  add_test(NAME consumer COMMAND "${PROJECT_SOURCE_DIR}/tools/consumer-test" "${PROJECT_BINARY_DIR}")
  set_tests_properties(consumer PROPERTIES ENVIRONMENT "CC=${CMAKE_C_COMPILER}")
endif()

# ---- packages ----
# Linux: libintrins1 (shared libraries, adapter, README) and libintrins-dev
# (headers, development links, intrins.pc, CMake package).  The shared
# libraries use the system's libstdc++, libgcc_s and libquadmath;
# dpkg-shlibdeps turns what they link into the runtime package's Depends.
# Windows: one zip of the install tree (the DLLs carry their compiler
# runtimes, see the toolchain file and INTRINS_QUADMATH).
set(CPACK_PACKAGE_NAME intrins)
set(CPACK_PACKAGE_CONTACT "libintrinsMD developers <intrins@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Intrinsic-procedure runtime library of a Fortran 90 compiler")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_COMPONENTS_ALL runtime dev)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME "intrins-${PROJECT_VERSION}-win32")
  set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
else()
  set(INTRINS_RUNTIME_PACKAGE "libintrins${PROJECT_VERSION_MAJOR}")
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${INTRINS_RUNTIME_PACKAGE}")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION_SUMMARY}
 The shared libraries libintrinsMD and libzamtf90md.")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_DEV_PACKAGE_NAME libintrins-dev)
  set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${INTRINS_RUNTIME_PACKAGE} (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_DEV_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION_SUMMARY} - development files
 Headers, development links, intrins.pc and the CMake package intrins.")
endif()
include(CPack)
