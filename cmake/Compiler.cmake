# The options that every target of this project is built with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(OrmelCompilerOptions INTERFACE)
target_compile_options(OrmelCompilerOptions INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 reports moved-from and union members as uninitialised in optimised builds.
  target_compile_options(OrmelCompilerOptions INTERFACE -Wno-maybe-uninitialized)
  # Its own string's `"text" + std::string` looks to it like a copy of 2^63 bytes, now and then.
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(OrmelCompilerOptions INTERFACE -Wno-restrict)
  endif()
  # Left to itself g++ looks for garbage so often that an eighth of the time goes into it. In kilobytes.
  target_compile_options(OrmelCompilerOptions INTERFACE "SHELL:--param ggc-min-heapsize=1048576")
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND NOT CMAKE_CXX_FLAGS MATCHES "-stdlib=libc[+][+]")
  # A sort of libstdc++ 12 calls what is deprecated there, and clang blames its caller. The other compilers still tell.
  target_compile_options(OrmelCompilerOptions INTERFACE -Wno-deprecated-declarations)
endif()
if(ORMEL_WARNINGS_AS_ERRORS)
  target_compile_options(OrmelCompilerOptions INTERFACE -Werror)
endif()

if(ORMEL_SANITIZERS)
  add_compile_options(-fsanitize=${ORMEL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # The check of virtual tables looks at memory through a pipe: with no descriptor left, which some tests see to, it
  # reports every object.
  add_compile_options(-fno-sanitize=vptr)
  if(ORMEL_SANITIZERS STREQUAL "address,undefined" AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Frames on the heap make the bridge thirty times slower with small lines. g++'s have to be asked for, too.
    add_compile_options(-fsanitize-address-use-after-return=never)
  endif()
  add_link_options(-fsanitize=${ORMEL_SANITIZERS})
endif()
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  add_link_options(-Wl,--as-needed -Wl,-O1)
  # The linker of binutils takes four times as long for the programs of clang, of which a preset has some sixty.
  find_program(ORMEL_LLD NAMES ld.lld-19)
  if(ORMEL_LLD AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_link_options(--ld-path=${ORMEL_LLD})
  endif()
endif()
