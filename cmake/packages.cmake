# The Debian packages, made by CPack out of the preset `package` (scripts/packages does all of it):
# libvxicore26-1 with the library, libvxicore26-dev for programs that are built against it, vxicore.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR vxicore26)
set(CPACK_PACKAGE_CONTACT "vxicore26 maintainers <maintainers@vxicore26.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has a first line of its own
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL library development)
if(TARGET vxicore)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE vxicore26)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(vx_exact "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(vx_deb ${PROJECT_SOURCE_DIR}/packaging/deb)

set(vx_long
"Removes the blocks of JPEG, estimates and filters noise, equalises tone
locally, separates detail from base and reshapes both, sharpens, changes
gamma, saturation and hue, restores grain and repairs edges, on interleaved
RGB pixels of 8 and 16 bits in the memory of a host program.")

# Debian's naming: the library's package carries its soname, with a hyphen behind a digit.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvxicore26-${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${vx_deb}/triggers ${vx_deb}/symbols ${PROJECT_BINARY_DIR}/deb/shlibs)
file(WRITE ${PROJECT_BINARY_DIR}/deb/shlibs
  "libvxicore26 ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"library that makes photographs better, in memory
${vx_long}

This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvxicore26-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# fftw3f.pc is what our .pc file requires in private.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} ${vx_exact}, libfftw3-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"library that makes photographs better, development files
${vx_long}

This package contains the documented C header, examples in C and C++, and
what pkg-config and CMake need.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vxicore)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} ${vx_exact}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"make photographs better from the command line
Enhances JPEG, PNG, TIFF and WebP files, one or whole folders: removes the
blocks of JPEG and noise, brings out local contrast and detail, sharpens,
changes brightness and colour, repairs colour beside edges. Settings can be
kept as presets, and some come along. Alpha, colour profile and metadata of
a picture are kept.")

# What Debian wants in each package beside the files: made between staging and packing.
set(CPACK_PRE_BUILD_SCRIPTS ${vx_deb}/stage.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${vx_deb}/finish.cmake)
set(CPACK_VX_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(CPACK_VX_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_VX_DOCS "library:${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME};development:libvxicore26-dev;tools:vxicore")
include(CPack)
