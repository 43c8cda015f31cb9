# Debian packages of a build (`cpack` in its directory, or scripts/package): the library, what
# building a host takes, and the command. They differ from what `cmake --install` puts where: the
# library stands in its architecture's directory, the command without a search path of its own, and
# each package has documents of its own. So their files are components beside the others.

set(CPACK_GENERATOR DEB)
set(CPACK_SOURCE_GENERATOR "")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_VENDOR "CorvoVerifiedRecording")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package's description begins with its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL DebianRuntime DebianDevelopment DebianTool)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE corvoverifiedrecording)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "CorvoVerifiedRecording developers <developers@corvo.invalid>")
set(CPACK_DEBIAN_PACKAGE_RELEASE 0corvo1)  # 1 and later would be the distribution's own packages
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

if(CORVO_TARGET STREQUAL "i386")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
  set(corvo_multiarch i386-linux-gnu)
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
  set(corvo_multiarch x86_64-linux-gnu)
endif()

# The changelog's date stands for the time of packaging, so that packages can be made again.
file(STRINGS packaging/debian/changelog corvo_changelog)
list(GET corvo_changelog 0 corvo_changelog_head)
if(NOT corvo_changelog_head MATCHES "\\(${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}\\)")
  message(FATAL_ERROR "packaging/debian/changelog doesn't begin with version "
                      "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
endif()
list(FILTER corvo_changelog INCLUDE REGEX "^ -- ")
list(GET corvo_changelog 0 corvo_changelog_foot)
string(REGEX REPLACE "^.*>  " "" corvo_changelog_date "${corvo_changelog_foot}")
execute_process(COMMAND date -u -d "${corvo_changelog_date}" +%s
  OUTPUT_VARIABLE corvo_source_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(WRITE "${CMAKE_BINARY_DIR}/packaging/SourceDate.cmake"
  "set(ENV{SOURCE_DATE_EPOCH} ${corvo_source_date})\n")
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_BINARY_DIR}/packaging/SourceDate.cmake")

# What the packages depend on. Written by hand, because no i386 packages need be installed that
# could be asked; the test "packages" holds it against what the programs need.
set(corvo_needs "libc6 (>= 2.34), libgcc-s1 (>= 7), libstdc++6 (>= 12)")
set(corvo_library_package libcorvoverifiedrecording${PROJECT_VERSION_MAJOR})
set(corvo_this_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# A 64-bit machine may hold the i386 library for its server beside the other one. CPack had no name
# for the field "Multi-Arch" before 3.31: it goes in behind the section.
set(CPACK_DEBIAN_DEBIANRUNTIME_PACKAGE_NAME ${corvo_library_package})
set(CPACK_DEBIAN_DEBIANRUNTIME_PACKAGE_SECTION "libs\nMulti-Arch: same")
set(CPACK_DEBIAN_DEBIANRUNTIME_PACKAGE_DEPENDS "${corvo_needs}")
set(CPACK_COMPONENT_DEBIANRUNTIME_DESCRIPTION
"seals and verifies voice recordings that must stand as evidence
A voicemail or call-recording server loads this library and calls four C
functions. Sealing rewrites a recording into one fixed G.726 WAVE layout and
stores its SHA-1 digest in the recording's own metadata record; verifying
finds out later whether it still is what was sealed.
.
This package contains the shared library.")

set(CPACK_DEBIAN_DEBIANDEVELOPMENT_PACKAGE_NAME libcorvoverifiedrecording-dev)
set(CPACK_DEBIAN_DEBIANDEVELOPMENT_PACKAGE_SECTION "libdevel\nMulti-Arch: same")
set(CPACK_DEBIAN_DEBIANDEVELOPMENT_PACKAGE_DEPENDS "${corvo_library_package} ${corvo_this_version}")
set(CPACK_COMPONENT_DEBIANDEVELOPMENT_DESCRIPTION
"seals and verifies voice recordings (development files)
What building a host of libCorvoVerifiedRecording takes: headers, the link
to the library, a pkg-config file, a CMake package and two example hosts,
one linked to the library and one that loads it.")

set(CPACK_DEBIAN_DEBIANTOOL_PACKAGE_NAME corvo)
set(CPACK_DEBIAN_DEBIANTOOL_PACKAGE_SECTION "utils\nMulti-Arch: foreign")
set(CPACK_DEBIAN_DEBIANTOOL_PACKAGE_DEPENDS
  "${corvo_library_package} ${corvo_this_version}, ${corvo_needs}")
set(CPACK_DEBIAN_DEBIANTOOL_PACKAGE_SUGGESTS python3)
set(CPACK_COMPONENT_DEBIANTOOL_DESCRIPTION
"verify sealed voice recordings, one or an archive of them
The command seals recordings, verifies single ones and whole archives, says
in reports for an expert and a court what a verdict rests on, writes recipes
of plain commands that recompute a seal without it, and shows and changes a
recording server's settings and traces.")

# Their files -------------------------------------------------------------------------------------

set(corvo_debian "${CMAKE_BINARY_DIR}/packaging/debian")
configure_file(packaging/debian/shlibs.in "${corvo_debian}/shlibs" @ONLY)
configure_file(packaging/debian/triggers "${corvo_debian}/triggers" COPYONLY)
set(CPACK_DEBIAN_DEBIANRUNTIME_PACKAGE_CONTROL_EXTRA
  "${corvo_debian}/shlibs" "${corvo_debian}/triggers")

corvo_install_library(lib/${corvo_multiarch} Debian EXCLUDE_FROM_ALL)
corvo_install_headers(DebianDevelopment EXCLUDE_FROM_ALL)
install(TARGETS corvo RUNTIME DESTINATION bin COMPONENT DebianTool EXCLUDE_FROM_ALL)
install(CODE "file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/corvo\")"
  COMPONENT DebianTool EXCLUDE_FROM_ALL)

# Installs a text, compressed to the same bytes each time.
set(corvo_compressed "")
function(corvo_install_compressed source name destination component)
  set(made "${corvo_debian}/${name}.gz")
  if(NOT made IN_LIST corvo_compressed)
    add_custom_command(OUTPUT "${made}"
      COMMAND gzip -9n < "${source}" > "${made}" DEPENDS "${source}" VERBATIM)
    set(corvo_compressed ${corvo_compressed} "${made}" PARENT_SCOPE)
  endif()
  install(FILES "${made}" DESTINATION ${destination} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

foreach(component Runtime Development Tool)
  string(TOUPPER DEBIAN${component} key)
  set(directory share/doc/${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  corvo_install_compressed("${PROJECT_SOURCE_DIR}/packaging/debian/changelog" changelog.Debian
    ${directory} Debian${component})
  install(FILES packaging/debian/copyright
    DESTINATION ${directory} COMPONENT Debian${component} EXCLUDE_FROM_ALL)
  corvo_install_texts(${component} ${directory} Debian EXCLUDE_FROM_ALL)
  foreach(page ${corvo_${component}_pages})
    get_filename_component(name ${page} NAME)
    corvo_man_directory(directory ${page})
    corvo_install_compressed(${page} ${name} share/man/${directory} Debian${component})
  endforeach()
endforeach()
add_custom_target(corvo_compressed_texts ALL DEPENDS ${corvo_compressed})

include(CPack)
