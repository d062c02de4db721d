# Language level, Windows version and warnings, the same for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

option(WRB_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)

add_library(wrb_compiler INTERFACE)
target_compile_definitions(wrb_compiler INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)

if(MSVC)
  target_compile_options(wrb_compiler INTERFACE /W4 /utf-8 /permissive- /Zc:__cplusplus /d1trimfile:${CMAKE_SOURCE_DIR}/)
  if(WRB_WARNINGS_AS_ERRORS)
    target_compile_options(wrb_compiler INTERFACE /WX)
  endif()
else()
  # __FILE__ becomes repo-relative: log lines and binaries never hold a build path.
  target_compile_options(wrb_compiler INTERFACE
      -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
      $<$<COMPILE_LANGUAGE:CXX>:-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in its own std::string when it optimises (assignments and operator+ of literals).
    target_compile_options(wrb_compiler INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Its -Wconversion has what GCC leaves out.
    target_compile_options(wrb_compiler INTERFACE -Wno-sign-conversion)
  endif()
  if(WRB_WARNINGS_AS_ERRORS)
    target_compile_options(wrb_compiler INTERFACE -Werror)
  endif()
  # Debug: the library checks its own preconditions, and undefined behaviour stops the program on the spot.
  target_compile_definitions(wrb_compiler INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
  target_compile_options(wrb_compiler INTERFACE
      $<$<AND:$<CONFIG:Debug>,$<COMPILE_LANGUAGE:CXX>>:-fsanitize=undefined;-fsanitize-undefined-trap-on-error;-fno-sanitize=vptr>)
endif()
