# Some machines build 32-bit programs and can't run them: their kernel offers 64-bit calls alone.
# There the i386 tests run under QEMU's user-mode emulation.
if(CORVO_TARGET STREQUAL "i386" AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  file(WRITE "${CMAKE_BINARY_DIR}/CMakeFiles/runs.c" "int main(void) { return 0; }\n")
  try_run(CORVO_RUNS_I386 built
    "${CMAKE_BINARY_DIR}/CMakeFiles/runs" "${CMAKE_BINARY_DIR}/CMakeFiles/runs.c")
  if(NOT CORVO_RUNS_I386 EQUAL 0)
    find_program(CORVO_QEMU_I386 qemu-i386)
    if(CORVO_QEMU_I386)
      message(STATUS "32-bit programs don't run on this machine: tests use ${CORVO_QEMU_I386}")
      set(CMAKE_CROSSCOMPILING_EMULATOR "${CORVO_QEMU_I386}")
    else()
      message(WARNING "32-bit programs don't run on this machine, and there is no qemu-i386 "
                      "(scripts/setup installs it): the i386 tests will fail.")
    endif()
  endif()
endif()
