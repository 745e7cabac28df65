# Where the tests of a 32-bit x86 Linux build run.  Some 64-bit kernels refuse
# 32-bit programs ("Exec format error"); there the tests run under qemu-i386's
# user-mode emulation instead, wired in as CMake's cross-compiling emulator so
# that ctest starts every test program through it.
#
# INTRINS_EMULATOR: "auto" (default) probes once whether a 32-bit program runs
# here and chooses qemu-i386 only when it does not; "none" runs natively;
# anything else is the emulator command to use (e.g. qemu-i386 to exercise the
# emulated path on a machine that would run the tests natively).
set(INTRINS_EMULATOR auto CACHE STRING "32-bit test runner: auto, none or an emulator command")
if(NOT INTRINS_X86_32 OR WIN32 OR NOT CMAKE_HOST_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  return()
endif()

set(_emulator "")
if(INTRINS_EMULATOR STREQUAL "auto")
  if(NOT DEFINED INTRINS_RUNS_32BIT)
    # try_run would refuse here (the x86 toolchain file makes the build a
    # cross build), so the probe is compiled and then started by hand.
    set(_dir "${CMAKE_BINARY_DIR}/CMakeFiles/probe32")
    file(WRITE "${_dir}/probe.cpp" "int main() { return 0; }\n")
    try_compile(_compiled "${_dir}/build" "${_dir}/probe.cpp" COPY_FILE "${_dir}/probe")
    set(_run 1)
    if(_compiled)
      execute_process(COMMAND "${_dir}/probe" RESULT_VARIABLE _run OUTPUT_QUIET ERROR_QUIET)
    endif()
    if(_compiled AND "${_run}" STREQUAL "0")
      set(INTRINS_RUNS_32BIT ON CACHE INTERNAL "32-bit programs run natively")
    else()
      set(INTRINS_RUNS_32BIT OFF CACHE INTERNAL "32-bit programs run natively")
    endif()
  endif()
  if(NOT INTRINS_RUNS_32BIT)
    set(_emulator qemu-i386)
  endif()
elseif(NOT INTRINS_EMULATOR STREQUAL "none")
  set(_emulator "${INTRINS_EMULATOR}")
endif()

if(_emulator)
  find_program(INTRINS_EMULATOR_PATH NAMES ${_emulator} REQUIRED)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${INTRINS_EMULATOR_PATH}")
  message(STATUS "32-bit tests run under ${INTRINS_EMULATOR_PATH}")
endif()
