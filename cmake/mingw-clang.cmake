# The second cross toolchain: clang and lld over the headers and libraries of the first one. Each program and DLL gets a
# PDB beside it, which Windows debuggers read. The third-party libraries are those that GCC built.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
                OUTPUT_VARIABLE wrb_gcc_folder OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET wrb_gcc_folder PARENT_PATH wrb_gcc_folder)

set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-windows-gnu)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-windows-gnu)
set(CMAKE_RC_COMPILER /usr/lib/llvm-14/bin/llvm-windres) # lld joins several resources only in the form of LLVM's compiler
set(CMAKE_RC_FLAGS_INIT "-DMESSAGETABLE=11") # a type that this compiler has no word for
set(CMAKE_LINKER ld.lld-14)
set(_CMAKE_LINKER_PUSHPOP_STATE_SUPPORTED FALSE) # its help names --push-state, which it knows for ELF alone

set(CMAKE_C_FLAGS_INIT "-g -gcodeview")
# What GCC defines for its C++ library on Windows, and the thread-local variables as that library has them.
string(CONCAT CMAKE_CXX_FLAGS_INIT
       "-g -gcodeview -femulated-tls -D__GXX_MERGED_TYPEINFO_NAMES=0 -D__GXX_TYPEINFO_EQUALITY_INLINE=0 -nostdinc++"
       " -isystem ${wrb_gcc_folder}/include/c++ -isystem ${wrb_gcc_folder}/include/c++/x86_64-w64-mingw32"
       " -isystem ${wrb_gcc_folder}/include/c++/backward")

foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT
      "-static -pthread -fuse-ld=lld -Wno-unused-command-line-argument -L${wrb_gcc_folder} -Wl,--pdb= -Wl,-Xlink=-pdbaltpath:%_PDB%")
endforeach()
