# The target docs: the reference of the public header as pages, in docs/html of the build tree, where Doxygen is
# found. What it warns of is an error.
find_program(VX_DOXYGEN doxygen)
mark_as_advanced(VX_DOXYGEN)
if(VX_DOXYGEN)
  configure_file(docs/Doxyfile.in Doxyfile @ONLY)
  add_custom_target(docs COMMAND ${VX_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
    COMMENT "Writing docs/html/index.html" VERBATIM)
endif()
