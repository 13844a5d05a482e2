# Debian packages, one per install component (scripts/package runs cpack -G DEB):
#   runtime -> libpimavmngapiMAJOR  the shared library; its name follows the SONAME
#   dev     -> libpimavmngapi-dev   headers, CMake package, pkg-config file, examples, README
#   tools   -> avmng-tools          avmng-emulator, avmngctl, sdptool, man pages, completion
# Dependencies on other Debian packages come from dpkg-shlibdeps; those between the three
# packages and the -dev package's build dependencies are declared here.
set(PIMAV_LIB_PACKAGE libpimavmngapi${PROJECT_VERSION_MAJOR})

set(CPACK_PACKAGE_NAME pimavmngapi)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "libpimAvMngApi developers")
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tools need the library of this build, found here and depended on by name below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${PIMAV_LIB_PACKAGE})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "Client library for the AV manager daemon of AES67 / ST 2110 devices
libpimAvMngApi is the library through which host processes on an audio/video-over-IP
device talk to the device's AV manager daemon over ZeroMQ.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libpimavmngapi-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "${PIMAV_LIB_PACKAGE} (= ${PROJECT_VERSION}), libjsoncpp-dev, libzmq3-dev, cppzmq-dev, pkg-config")
set(CPACK_DEBIAN_DEV_DESCRIPTION
    "Development files of libpimAvMngApi
Headers, the CMake package (find_package(pimAvMngApi)), the pkg-config file, and the
example host programs with sample advertised sessions.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME avmng-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${PIMAV_LIB_PACKAGE} (= ${PROJECT_VERSION})")
# Files under /etc are the administrator's: dpkg keeps their changes on upgrade.
file(WRITE ${PROJECT_BINARY_DIR}/deb-tools/conffiles "${CMAKE_INSTALL_FULL_SYSCONFDIR}/bash_completion.d/avmng-tools\n")
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/deb-tools/conffiles)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "AV manager device emulator and command-line tools
avmng-emulator stands in for the device's AV manager daemon; avmngctl sends it any
command; sdptool checks, shows and generates SDP session descriptions.")

include(CPack)
