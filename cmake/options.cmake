# Compiler settings that hold for all of our code.

add_library(vx_options INTERFACE)
target_include_directories(vx_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_compile_options(vx_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow
  # Clang, which only builds the fuzz targets, warns of other things and does not know all our pragmas.
  $<$<CXX_COMPILER_ID:GNU>:-Werror>
  # A fused multiply-add would round once where the formulas round twice, and only on processors that
  # have it: results would depend on the machine.
  -ffp-contract=off)
if(VX_SANITIZE)
  target_compile_options(vx_options INTERFACE
    -fsanitize=${VX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
  target_link_options(vx_options INTERFACE -fsanitize=${VX_SANITIZE})
endif()

# Fuzz targets with libFuzzer, which comes with Clang (preset fuzz); without it they make a bounded run.
option(VX_LIBFUZZER "Link the fuzz targets with libFuzzer" OFF)
mark_as_advanced(VX_LIBFUZZER)
if(VX_LIBFUZZER)
  # To follow the operands of comparisons pays in parsers and took five sixths of the time in loops over pixels.
  target_compile_options(vx_options INTERFACE -fsanitize=fuzzer-no-link -fno-sanitize-coverage=trace-cmp)
endif()

# vx_add_objects(NAME SOURCE...): the objects of one folder, collected into the library.
function(vx_add_objects name)
  add_library(${name} OBJECT ${ARGN})
  target_link_libraries(${name} PRIVATE vx_options OpenMP::OpenMP_CXX PkgConfig::FFTW3F)
  set_property(GLOBAL APPEND PROPERTY VX_OBJECT_LIBRARIES ${name})
endfunction()
