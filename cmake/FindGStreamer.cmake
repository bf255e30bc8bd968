# GStreamer with its base, video and audio libraries, and GstCheck: targets GStreamer::<name>. Not by its .pc files,
# whose libunwind is another one than libc++'s, and Debian 12 installs only one of the two for development.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(GSTREAMER_GLIB QUIET IMPORTED_TARGET gobject-2.0)
endif()
find_path(GStreamer_INCLUDE_DIR gst/gst.h PATH_SUFFIXES gstreamer-1.0)
foreach(name gstreamer gstbase gstvideo gstaudio gstcheck)
  find_library(GStreamer_${name}_LIBRARY ${name}-1.0)
  mark_as_advanced(GStreamer_${name}_LIBRARY)
endforeach()
find_file(GStreamer_video_HEADER gst/video/gstvideofilter.h PATHS ${GStreamer_INCLUDE_DIR} NO_DEFAULT_PATH)
if(GStreamer_INCLUDE_DIR)
  file(STRINGS ${GStreamer_INCLUDE_DIR}/gst/gstversion.h numbers REGEX "define GST_VERSION_(MAJOR|MINOR|MICRO) ")
  string(REGEX MATCHALL "\\(([0-9]+)\\)" numbers "${numbers}")
  string(REGEX REPLACE "[()]" "" numbers "${numbers}")
  list(JOIN numbers . GStreamer_VERSION)
endif()
mark_as_advanced(GStreamer_INCLUDE_DIR GStreamer_video_HEADER)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(GStreamer VERSION_VAR GStreamer_VERSION
  REQUIRED_VARS GStreamer_gstreamer_LIBRARY GStreamer_gstbase_LIBRARY GStreamer_gstvideo_LIBRARY
    GStreamer_gstaudio_LIBRARY GStreamer_INCLUDE_DIR GStreamer_video_HEADER GSTREAMER_GLIB_FOUND)

if(GStreamer_FOUND AND NOT TARGET GStreamer::gstreamer)
  foreach(name gstreamer gstbase gstvideo gstaudio gstcheck)
    if(GStreamer_${name}_LIBRARY)
      add_library(GStreamer::${name} UNKNOWN IMPORTED)
      set_target_properties(GStreamer::${name} PROPERTIES IMPORTED_LOCATION ${GStreamer_${name}_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${GStreamer_INCLUDE_DIR})
      target_link_libraries(GStreamer::${name} INTERFACE PkgConfig::GSTREAMER_GLIB)
    endif()
  endforeach()
endif()
