# ---- the index of `report --html`: one file, made a C++ source as it is ----
set(index_source ${CMAKE_CURRENT_LIST_DIR}/index.html)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${index_source})
file(READ ${index_source} index_html)
configure_file(${CMAKE_CURRENT_LIST_DIR}/index_template.cc.in ${CMAKE_CURRENT_BINARY_DIR}/index_template.cc @ONLY)
target_sources(zel_monitor_parts PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/index_template.cc)
