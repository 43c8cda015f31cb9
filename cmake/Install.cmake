# What `cmake --install` puts where, in three components: Runtime (the library), Development (what
# building a host takes) and Tool (the corvo command).

include(CMakePackageConfigHelpers)

# The installed files find each other by relative paths, so that a prefix can be moved. Where the
# user gives an absolute directory, that one is meant.
function(corvo_relative result prefix from to)
  if(IS_ABSOLUTE "${to}")
    set(${result} "${to}" PARENT_SCOPE)
  elseif(IS_ABSOLUTE "${from}")
    set(${result} "${CMAKE_INSTALL_PREFIX}/${to}" PARENT_SCOPE)
  else()
    file(RELATIVE_PATH path "/${from}" "/${to}")
    string(REGEX REPLACE "/$" "" path "${path}")
    set(${result} "${prefix}/${path}" PARENT_SCOPE)
  endif()
endfunction()

# The library and what finds it, below `libdir`. `kit` is put before the components' names.
function(corvo_install_library libdir kit)
  set(export ${kit}CorvoVerifiedRecordingTargets)
  install(TARGETS CorvoVerifiedRecording EXPORT ${export}
    LIBRARY DESTINATION ${libdir} COMPONENT ${kit}Runtime
    NAMELINK_COMPONENT ${kit}Development ${ARGN})

  set(generated "${CMAKE_BINARY_DIR}/packaging/${kit}")
  corvo_relative(CORVO_PC_LIBDIR "\${pcfiledir}" ${libdir}/pkgconfig ${libdir})
  corvo_relative(CORVO_PC_INCLUDEDIR "\${pcfiledir}" ${libdir}/pkgconfig ${CMAKE_INSTALL_INCLUDEDIR})
  configure_file(packaging/CorvoVerifiedRecording.pc.in
    "${generated}/CorvoVerifiedRecording.pc" @ONLY)
  install(FILES "${generated}/CorvoVerifiedRecording.pc"
    DESTINATION ${libdir}/pkgconfig COMPONENT ${kit}Development ${ARGN})

  # Refuses a consumer of the other word size, too.
  write_basic_package_version_file("${generated}/CorvoVerifiedRecordingConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
  install(FILES packaging/CorvoVerifiedRecordingConfig.cmake
    "${generated}/CorvoVerifiedRecordingConfigVersion.cmake"
    DESTINATION ${libdir}/cmake/CorvoVerifiedRecording COMPONENT ${kit}Development ${ARGN})
  install(EXPORT ${export} NAMESPACE Corvo:: FILE CorvoVerifiedRecordingTargets.cmake
    DESTINATION ${libdir}/cmake/CorvoVerifiedRecording COMPONENT ${kit}Development ${ARGN})
endfunction()

corvo_install_library(${CMAKE_INSTALL_LIBDIR} "")

function(corvo_install_headers component)
  foreach(header ${CORVO_PUBLIC_HEADERS})
    get_filename_component(room ${header} DIRECTORY)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/CorvoVerifiedRecording/${room}
      COMPONENT ${component} ${ARGN})
  endforeach()
endfunction()

corvo_install_headers(Development)

corvo_relative(corvo_library_path "\$ORIGIN" ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR})
set_target_properties(corvo PROPERTIES INSTALL_RPATH "${corvo_library_path}")
install(TARGETS corvo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tool)

# A host's programmer reads how the parts work together; who runs the command, the other guides.
file(GLOB corvo_Tool_guides CONFIGURE_DEPENDS docs/*.md)
set(corvo_Development_guides "${CMAKE_CURRENT_SOURCE_DIR}/docs/ARCHITECTURE.md")
list(REMOVE_ITEM corvo_Tool_guides ${corvo_Development_guides})
set(corvo_Tool_examples examples/verify_seal.py)
set(corvo_Development_examples examples/host.c examples/host.cpp)
file(GLOB corvo_Tool_pages CONFIGURE_DEPENDS docs/man/*.1 docs/man/*.7)
file(GLOB corvo_Development_pages CONFIGURE_DEPENDS docs/man/*.3)

function(corvo_install_texts component directory kit)
  install(FILES ${corvo_${component}_guides}
    DESTINATION ${directory} COMPONENT ${kit}${component} ${ARGN})
  foreach(example ${corvo_${component}_examples})
    set(kind FILES)
    if(example MATCHES "\\.py$")
      set(kind PROGRAMS)
    endif()
    install(${kind} ${example}
      DESTINATION ${directory}/examples COMPONENT ${kit}${component} ${ARGN})
  endforeach()
endfunction()

# Gives where a manual page belongs: man1, man3 ...
function(corvo_man_directory result page)
  string(REGEX REPLACE "^.*\\." "man" directory ${page})
  set(${result} ${directory} PARENT_SCOPE)
endfunction()

foreach(component Development Tool)
  corvo_install_texts(${component} ${CMAKE_INSTALL_DOCDIR} "")
  foreach(page ${corvo_${component}_pages})
    corvo_man_directory(directory ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/${directory} COMPONENT ${component})
  endforeach()
endforeach()
