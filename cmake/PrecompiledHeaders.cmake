# Headers of others that many sources of a target include, compiled once for it.  Off by default: a cache of
# compilations keeps nothing that depends on them, and is the better help to whoever builds again and again.
# Not where the compiler optimises: it then looks for faults in those headers as if they were ours.
option(MMSBRIX_PRECOMPILED_HEADERS "Precompile headers of others: for a build from nothing without a cache" OFF)
function(mmsbrix_precompile target)
  if(MMSBRIX_PRECOMPILED_HEADERS AND NOT CMAKE_BUILD_TYPE STREQUAL Release)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
# The same for a target that is compiled in the same way, without compiling them once more.
function(mmsbrix_precompiled_by other target)
  if(MMSBRIX_PRECOMPILED_HEADERS AND NOT CMAKE_BUILD_TYPE STREQUAL Release)
    target_precompile_headers(${target} REUSE_FROM ${other})
  endif()
endfunction()
