# Chooses the target before any language is enabled, so that every compiler check sees it too.
#
# i386 is the product: the hosts that load the library are 32-bit x86 processes. It is the default
# wherever the compiler can build for it.

set(CORVO_TARGET "" CACHE STRING
    "Target: i386 (the product) or x86-64. Empty: i386 where the compiler can build it.")
set_property(CACHE CORVO_TARGET PROPERTY STRINGS "" i386 x86-64)

# Sets `result` to whether the C++ compiler that CMake is about to use links a 32-bit program.
function(corvo_can_build_i386 result)
  if(CMAKE_CXX_COMPILER)
    set(compiler "${CMAKE_CXX_COMPILER}")
  elseif(DEFINED ENV{CXX})
    set(compiler "$ENV{CXX}")
  else()
    set(compiler c++)
  endif()
  set(probe "${CMAKE_BINARY_DIR}/CMakeFiles/can-build-i386.cpp")
  file(WRITE "${probe}" "#include <string>\nint main() { return int(std::string{}.size()); }\n")
  execute_process(
    COMMAND "${compiler}" -m32 "${probe}" -o "${probe}.out"
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
  if(status EQUAL 0)
    set(${result} TRUE PARENT_SCOPE)
  else()
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

if(CORVO_TARGET STREQUAL "")
  corvo_can_build_i386(can_build_i386)
  if(can_build_i386)
    set(CORVO_TARGET i386 CACHE STRING "" FORCE)
    message(STATUS "Target: i386, the product")
  else()
    set(CORVO_TARGET x86-64 CACHE STRING "" FORCE)
    message(WARNING "Target: x86-64. This compiler can't link 32-bit programs "
                    "(scripts/setup installs g++-multilib), so the i386 product is not built.")
  endif()
elseif(CORVO_TARGET STREQUAL "i386" OR CORVO_TARGET STREQUAL "x86-64")
  message(STATUS "Target: ${CORVO_TARGET}, as asked")
else()
  message(FATAL_ERROR "CORVO_TARGET is \"${CORVO_TARGET}\"; it must be i386 or x86-64")
endif()

# The flags below are taken up when a build directory is first configured.
if(NOT DEFINED CACHE{CORVO_CONFIGURED_TARGET})
  set(CORVO_CONFIGURED_TARGET "${CORVO_TARGET}" CACHE INTERNAL "This build directory's target")
endif()
if(NOT CORVO_CONFIGURED_TARGET STREQUAL CORVO_TARGET)
  message(FATAL_ERROR "This build directory is for ${CORVO_CONFIGURED_TARGET}; "
                      "take another for ${CORVO_TARGET}")
endif()

if(CORVO_TARGET STREQUAL "i386")
  set(CMAKE_C_FLAGS_INIT "-m32")
  set(CMAKE_CXX_FLAGS_INIT "-m32")
else()
  set(CMAKE_C_FLAGS_INIT "-m64")
  set(CMAKE_CXX_FLAGS_INIT "-m64")
endif()
