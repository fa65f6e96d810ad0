# Debian packages, one for each component of the installation: `cpack` in a build folder makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mmsbrix)
set(CPACK_PACKAGE_VENDOR Mmsbrix)
set(CPACK_PACKAGE_CONTACT "Mmsbrix developers <mmsbrix@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tool python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(library libmmsbrix${MMSBRIX_ABI_MAJOR})
set(same_library "${library} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
    "MMS kernel, shared library\nComposes, encodes, decodes, inspects, submits and fetches multimedia messages.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "shared-mime-info, ca-certificates")

set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "MMS kernel, development files\nHeaders, static library, CMake package and pkg-config file of libmmsbrix.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmmsbrix-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${same_library}, libcurl4-openssl-dev, libxml2-dev")

set(CPACK_DEBIAN_TOOL_DESCRIPTION
    "Multimedia messages from the command line\nComposes, shows, extracts, submits and fetches multimedia messages, and plays their relay.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME mmsbrix)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${same_library}")
set(CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS mobile-broadband-provider-info)

set(CPACK_DEBIAN_PYTHON_DESCRIPTION
    "Multimedia messages from Python\nA module over the C interface of libmmsbrix.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-mmsbrix)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), ${library} (>= ${PROJECT_VERSION})")
# Python writes compiled modules beside the sources: made and removed with the package.
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/postinst ${PROJECT_SOURCE_DIR}/cmake/debian/prerm)
include(CPack)
