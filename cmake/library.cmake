# The shared library, and the static archive of the same objects for tests and benchmarks.

get_property(vx_object_libraries GLOBAL PROPERTY VX_OBJECT_LIBRARIES)
foreach(objects IN LISTS vx_object_libraries)
  list(APPEND vx_objects $<TARGET_OBJECTS:${objects}>)
endforeach()

add_library(vxicore26 SHARED ${vx_objects})
target_include_directories(vxicore26 PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(vxicore26 PRIVATE OpenMP::OpenMP_CXX PkgConfig::FFTW3F)
set_target_properties(vxicore26 PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/vxicore26.map)
target_link_options(vxicore26 PRIVATE
  -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/vxicore26.map
  # Team threads of the OpenMP runtime outlive dlclose.
  -Wl,-z,nodelete)
if(VX_SANITIZE)
  target_link_options(vxicore26 PRIVATE -fsanitize=${VX_SANITIZE})
else()
  target_link_options(vxicore26 PRIVATE -Wl,-z,defs)
endif()

add_library(vxicore26_internal STATIC ${vx_objects})
target_link_libraries(vxicore26_internal PUBLIC vx_options OpenMP::OpenMP_CXX PkgConfig::FFTW3F)
