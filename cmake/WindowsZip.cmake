# One zip that is unpacked anywhere: programs and libraries with what they need beside them, headers, import
# and static library, CMake package.  `cpack` in the build folder makes it.
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME mmsbrix)
set(CPACK_PACKAGE_VENDOR Mmsbrix)
set(CPACK_PACKAGE_FILE_NAME mmsbrix-${PROJECT_VERSION}-windows-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)

foreach(library libgcc_s_dw2-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
                  OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  install(PROGRAMS ${path} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md
              ${PROJECT_SOURCE_DIR}/CHANGELOG.md
        DESTINATION . COMPONENT library)
include(CPack)
