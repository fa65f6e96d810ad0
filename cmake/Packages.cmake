# Debian packages, one for each component of the installation: `cpack` in a build folder makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mmsbrix)
set(CPACK_PACKAGE_VENDOR Mmsbrix)
set(CPACK_PACKAGE_CONTACT "Mmsbrix developers <mmsbrix@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/StripArchives.cmake)
set(CPACK_COMPONENTS_ALL library development tool python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# The first line of each description is the package's summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(library libmmsbrix${MMSBRIX_ABI_MAJOR})
set(same_library "${library} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
    "MMS kernel, shared library\nComposes, encodes, decodes, inspects, submits and fetches multimedia\nmessages, by HTTP or through a WAP gateway.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "shared-mime-info, ca-certificates")

set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "MMS kernel, development files\nHeaders for C++ and C, static library, CMake package and pkg-config file of\nlibmmsbrix.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmmsbrix-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${same_library}, libcurl4-openssl-dev, libxml2-dev")

set(CPACK_DEBIAN_TOOL_DESCRIPTION
    "Multimedia messages from the command line\nComposes, shows, extracts, submits and fetches multimedia messages, and\nplays their relay and WAP gateway.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME mmsbrix)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${same_library}")
set(CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS mobile-broadband-provider-info)

set(CPACK_DEBIAN_PYTHON_DESCRIPTION
    "Multimedia messages from Python\nA module that composes, reads, submits and fetches multimedia messages,\nover the C interface of libmmsbrix.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-mmsbrix)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), ${library} (>= ${PROJECT_VERSION})")
# Python writes compiled modules beside the sources: made and removed with the package.
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/postinst ${PROJECT_SOURCE_DIR}/cmake/debian/prerm)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)

# What a package says of itself.
set(papers ${PROJECT_BINARY_DIR}/debian)
configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in ${papers}/changelog @ONLY)
execute_process(COMMAND gzip -9nf ${papers}/changelog COMMAND_ERROR_IS_FATAL ANY)
foreach(component library development tool python)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/overrides-${component}.in
                 ${papers}/${package} @ONLY)
  install(FILES ${papers}/changelog.gz DESTINATION share/doc/${package} COMPONENT ${component}
          EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright DESTINATION share/doc/${package}
          COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${papers}/${package} DESTINATION share/lintian/overrides COMPONENT ${component}
          EXCLUDE_FROM_ALL)
endforeach()
include(CPack)
