# ---- the page of --html: bundled by npm's packages into one C++ source ----
if(NOT ZEL_BUILD_PAGE)
  message(STATUS "zel-monitor scan: no --html (ZEL_BUILD_PAGE is OFF)")
  target_sources(zel_monitor_parts PRIVATE report/page_absent.cc)
  return()
endif()

find_program(ZEL_NODE NAMES node nodejs)
find_program(ZEL_NPM npm)
if(NOT ZEL_NODE OR NOT ZEL_NPM)
  message(FATAL_ERROR "The page of zel-monitor scan needs node (18 or later) and npm: install the packages nodejs "
    "and npm, or configure with -DZEL_BUILD_PAGE=OFF, which builds everything but --html.")
endif()

set(page_source ${CMAKE_CURRENT_LIST_DIR})
set(page_build ${CMAKE_CURRENT_BINARY_DIR}/page)
set(page_packages ${page_source}/package.json ${page_source}/package-lock.json ${page_source}/.npmrc)
set(page_files
  build.mjs index.html
  main.js address.js data.js events.js filter.js format.js keys.js lanes.js overview.js table.js timeline.js
  style.css base.css tables.css parts.css phone.css)
list(TRANSFORM page_files PREPEND ${page_source}/)

add_custom_command(OUTPUT ${page_build}/packages.stamp
  COMMAND ${CMAKE_COMMAND} -E copy ${page_packages} ${page_build}
  COMMAND ${CMAKE_COMMAND} -E chdir ${page_build} ${ZEL_NPM} ci --ignore-scripts --loglevel=error
  COMMAND ${CMAKE_COMMAND} -E touch ${page_build}/packages.stamp
  DEPENDS ${page_packages}
  COMMENT "Fetching the page's packages" VERBATIM)
add_custom_command(OUTPUT ${page_build}/page_template.cc
  COMMAND ${CMAKE_COMMAND} -E copy ${page_files} ${page_build}
  COMMAND ${ZEL_NODE} ${page_build}/build.mjs ${page_build}/page_template.cc
  DEPENDS ${page_files} ${page_build}/packages.stamp
  COMMENT "Bundling the page" VERBATIM)
file(MAKE_DIRECTORY ${page_build})
target_sources(zel_monitor_parts PRIVATE ${page_build}/page_template.cc)
