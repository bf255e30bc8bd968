# What our own targets are compiled with. Flags are set on targets, never
# globally, so that a project which adds this one as a subdirectory keeps its own.

# zel_instrument(<target>): sanitizers and coverage, as the cache says.
function(zel_instrument target)
  if(ZEL_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${ZEL_SANITIZE}
      -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${ZEL_SANITIZE})
  endif()
  if(ZEL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# zel_harden(<target>): what Debian asks of its packages, so that a fault ends the process and not the host's secrets.
# Executables must be position independent: see CMAKE_POSITION_INDEPENDENT_CODE in CMakeLists.txt.
function(zel_harden target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong -fstack-clash-protection
    $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>
    $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},aarch64>:-mbranch-protection=standard>
    # The checks of sizes need the optimiser; Debian's own flags may have asked for them already.
    $<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=3>)
  target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endfunction()

# zel_target_defaults(<target>): language, visibility, arithmetic, warnings.
function(zel_target_defaults target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE
    # Verdicts depend on single roundings: a*b+c stays two operations, also in
    # kernels that are compiled for a processor with fused multiply-add.
    # A project around this one may have asked for fast-math.
    -fno-fast-math -ffp-contract=off
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wundef
    $<$<BOOL:${ZEL_WERROR}>:-Werror>
    # GCC 12 sees overlapping copies in std::string = "literal" (GCC bug 105651).
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
  zel_instrument(${target})
  if(ZEL_HARDEN)
    zel_harden(${target})
  endif()
endfunction()
