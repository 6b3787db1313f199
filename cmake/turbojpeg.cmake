# TurboJPEG: what tests and benchmarks compare our codec with, where it is installed (Debian:
# libturbojpeg0-dev). The library itself does not use it.

find_path(VX_TURBOJPEG_INCLUDE turbojpeg.h)
find_library(VX_TURBOJPEG turbojpeg)
mark_as_advanced(VX_TURBOJPEG_INCLUDE VX_TURBOJPEG)
set(VX_TURBOJPEG_FOUND OFF)
if(VX_TURBOJPEG_INCLUDE AND VX_TURBOJPEG)
  set(VX_TURBOJPEG_FOUND ON)
endif()

# vx_link_turbojpeg(TARGET): links it and defines VX_TURBOJPEG where it was found.
function(vx_link_turbojpeg target)
  if(VX_TURBOJPEG_FOUND)
    target_include_directories(${target} SYSTEM PRIVATE ${VX_TURBOJPEG_INCLUDE})
    target_link_libraries(${target} PRIVATE ${VX_TURBOJPEG})
    target_compile_definitions(${target} PRIVATE VX_TURBOJPEG)
  endif()
endfunction()
