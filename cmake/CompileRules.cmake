# What every target of ours is compiled with. Nothing here reaches whoever embeds the library.

option(CORVO_WARNINGS_AS_ERRORS "Treat compiler warnings as errors (our presets do)" OFF)
set(CORVO_SANITIZERS "" CACHE STRING "Value for -fsanitize=, such as address,undefined or thread")

add_library(corvo_rules INTERFACE)
target_compile_features(corvo_rules INTERFACE cxx_std_17)
target_compile_options(corvo_rules INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${CORVO_WARNINGS_AS_ERRORS}>:-Werror>)
# On i386, stat and open must not fail with EOVERFLOW where inode numbers need 64 bits.
target_compile_definitions(corvo_rules INTERFACE _FILE_OFFSET_BITS=64)

# What is given out, the library and the command, is compiled and linked with this besides.
add_library(corvo_product INTERFACE)
target_link_libraries(corvo_product INTERFACE corvo_rules)
# The same sources give the same bytes wherever they stand and are built.
target_compile_options(corvo_product INTERFACE
  "-ffile-prefix-map=${CMAKE_SOURCE_DIR}=." "-ffile-prefix-map=${CMAKE_BINARY_DIR}=./build")
if(NOT CORVO_SANITIZERS)  # they find more, and earlier
  target_compile_options(corvo_product INTERFACE
    -fstack-protector-strong -fstack-clash-protection
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  target_link_options(corvo_product INTERFACE
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text)
endif()

if(CORVO_SANITIZERS)
  add_compile_options(-fsanitize=${CORVO_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # GCC finds a null reference in every `catch (abi::__forced_unwind&)` that catches a cancellation.
  add_compile_options(-fno-sanitize=null)
  add_link_options(-fsanitize=${CORVO_SANITIZERS})
endif()

if(CORVO_FUZZERS)  # the coverage that the fuzzer is guided by
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
