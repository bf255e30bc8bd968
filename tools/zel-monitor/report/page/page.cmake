# ---- the pages of scan --html and serve: each bundled by npm's packages into one C++ source ----
if(NOT ZEL_BUILD_PAGE)
  message(STATUS "zel-monitor: no scan --html and no wall in serve (ZEL_BUILD_PAGE is OFF)")
  target_sources(zel_monitor_parts PRIVATE report/page_absent.cc serve/wall_page_absent.cc)
  return()
endif()

find_program(ZEL_NODE NAMES node nodejs)
find_program(ZEL_NPM npm)
if(NOT ZEL_NODE OR NOT ZEL_NPM)
  message(FATAL_ERROR "The pages of zel-monitor need node (18 or later) and npm: install the packages nodejs "
    "and npm, or configure with -DZEL_BUILD_PAGE=OFF, which builds everything but them.")
endif()

set(page_source ${CMAKE_CURRENT_LIST_DIR})
set(wall_source ${CMAKE_CURRENT_SOURCE_DIR}/serve/wall)
set(page_build ${CMAKE_CURRENT_BINARY_DIR}/page)
set(page_packages ${page_source}/package.json ${page_source}/package-lock.json ${page_source}/.npmrc)
set(page_files
  build.mjs index.html
  main.js address.js data.js events.js filter.js format.js keys.js lanes.js overview.js table.js timeline.js
  style.css base.css tables.css parts.css phone.css)
list(TRANSFORM page_files PREPEND ${page_source}/)
set(wall_files wall.html wall.js tile.js wall.css)
list(TRANSFORM wall_files PREPEND ${wall_source}/)

add_custom_command(OUTPUT ${page_build}/packages.stamp
  COMMAND ${CMAKE_COMMAND} -E copy ${page_packages} ${page_build}
  COMMAND ${CMAKE_COMMAND} -E chdir ${page_build} ${ZEL_NPM} ci --ignore-scripts --loglevel=error
  COMMAND ${CMAKE_COMMAND} -E touch ${page_build}/packages.stamp
  DEPENDS ${page_packages}
  COMMENT "Fetching the pages' packages" VERBATIM)

add_custom_command(OUTPUT ${page_build}/sources.stamp
  COMMAND ${CMAKE_COMMAND} -E copy ${page_files} ${wall_files} ${page_build}
  COMMAND ${CMAKE_COMMAND} -E touch ${page_build}/sources.stamp
  DEPENDS ${page_files} ${wall_files}
  COMMENT "Copying the pages' sources" VERBATIM)

# zel_page(<source> <html> <script> <style> <header> <function>): the source, which defines the function.
function(zel_page source)
  add_custom_command(OUTPUT ${page_build}/${source}
    COMMAND ${ZEL_NODE} ${page_build}/build.mjs ${ARGN} ${page_build}/${source}
    DEPENDS ${page_build}/sources.stamp ${page_build}/packages.stamp
    COMMENT "Bundling ${source}" VERBATIM)
  target_sources(zel_monitor_parts PRIVATE ${page_build}/${source})
endfunction()

file(MAKE_DIRECTORY ${page_build})
zel_page(page_template.cc index.html main.js style.css report/page_template.h pageTemplate)
zel_page(wall_page.cc wall.html wall.js wall.css serve/wall_page.h wallPage)
