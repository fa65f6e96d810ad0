# Run by CPack on what goes into the packages: static libraries keep their code and symbols, not what debuggers
# and the link-time optimisation of this very compiler read.
file(GLOB_RECURSE archives ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.a)
foreach(archive IN LISTS archives)
  execute_process(
    COMMAND strip --strip-debug --remove-section=.comment --remove-section=.note
            --remove-section=.gnu.lto_* --remove-section=.gnu.debuglto_*
            --strip-symbol=__gnu_lto_slim --strip-symbol=__gnu_lto_v1 ${archive}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
