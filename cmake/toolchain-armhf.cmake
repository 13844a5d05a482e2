# Cross build for 32-bit Arm Linux boards (armhf: ARMv7-A, hard float) with Debian's
# arm-linux-gnueabihf compiler and a sysroot that holds the armhf builds of the libraries
# (scripts/test-armhf makes one from Debian's armhf packages):
#
#   cmake -S . -B build/armhf -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-armhf.cmake \
#         -DPIMAV_ARMHF_SYSROOT=/path/to/sysroot
#
# The sysroot may also come from the environment variable of the same name.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-gcc)
set(CMAKE_CXX_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-g++)

if(NOT PIMAV_ARMHF_SYSROOT AND DEFINED ENV{PIMAV_ARMHF_SYSROOT})
    set(PIMAV_ARMHF_SYSROOT "$ENV{PIMAV_ARMHF_SYSROOT}")
endif()
if(NOT PIMAV_ARMHF_SYSROOT OR NOT IS_DIRECTORY "${PIMAV_ARMHF_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
    message(FATAL_ERROR "PIMAV_ARMHF_SYSROOT must name a sysroot with usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} "
                        "(got '${PIMAV_ARMHF_SYSROOT}'); scripts/test-armhf makes one")
endif()
# The compiler checks run in their own projects: hand them the sysroot too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PIMAV_ARMHF_SYSROOT)

set(CMAKE_SYSROOT "${PIMAV_ARMHF_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH "${PIMAV_ARMHF_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# GCC notes, for many std containers, that Arm passes some of their arguments differently since
# GCC 7.1 (-Wpsabi). That matters only when linking with objects of an older GCC; nothing here
# is. CMake reads this file more than once: the flags are set, never appended to.
set(CMAKE_C_FLAGS_INIT "-Wno-psabi")
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")

# The sysroot's libraries need others of the sysroot (libzmq: libsodium, libpgm, ...); the
# linker follows those through rpath-link, in both halves of the split /lib and /usr/lib.
set(pimav_usr_lib "${PIMAV_ARMHF_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
set(pimav_lib "${PIMAV_ARMHF_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${pimav_usr_lib} -Wl,-rpath-link,${pimav_lib}")
endforeach()

# pkg-config reads the sysroot's .pc files and prefixes their paths with the sysroot.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${PIMAV_ARMHF_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${pimav_usr_lib}/pkgconfig:${PIMAV_ARMHF_SYSROOT}/usr/share/pkgconfig")
unset(ENV{PKG_CONFIG_PATH})

# ctest runs the test programs under qemu's user-mode emulator, which loads their shared
# libraries from the sysroot. Programs those tests start need the kernel's binfmt handler
# for Arm and QEMU_LD_PREFIX set to the sysroot (scripts/test-armhf sets up both).
find_program(PIMAV_QEMU_ARM qemu-arm)
if(PIMAV_QEMU_ARM)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${PIMAV_QEMU_ARM};-L;${PIMAV_ARMHF_SYSROOT}")
endif()
