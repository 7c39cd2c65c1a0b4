# 32-bit x86 on an x86-64 machine (package g++-12-multilib).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc-12)
set(CMAKE_CXX_COMPILER g++-12)
# The kernel's headers are the same for both; only g++-multilib, which excludes cross compilers,
# would link them to where -m32 looks.
set(CMAKE_C_FLAGS_INIT "-m32 -idirafter /usr/include/x86_64-linux-gnu")
set(CMAKE_CXX_FLAGS_INIT "-m32 -idirafter /usr/include/x86_64-linux-gnu")
# Some kernels run no 32-bit programs.
execute_process(COMMAND /lib/ld-linux.so.2 --version RESULT_VARIABLE cannot_run OUTPUT_QUIET ERROR_QUIET)
if(cannot_run)
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386)
endif()
