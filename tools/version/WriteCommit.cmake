# Writes the header with the commit of `folder`, "-dirty" after it when tracked files have changed.
cmake_minimum_required(VERSION 3.25)
if(git)
  execute_process(COMMAND ${git} describe --always --dirty --abbrev=12 --exclude=* WORKING_DIRECTORY ${folder}
                  OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT commit)
  set(commit unknown)
endif()
file(CONFIGURE OUTPUT ${header} CONTENT "inline constexpr char kCommit[] = \"@commit@\";\n" @ONLY)
