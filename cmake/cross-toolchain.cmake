# Toolchain for the portability builds: s390x (64-bit big-endian) and i386 (32-bit).
# KURVO_CROSS_ARCH names the target (s390x or i386); KURVO_SYSROOT is a folder
# holding the target's libraries unpacked from Debian packages, which
# scripts/cross-sysroot.sh makes. scripts/cross-test.sh sets both.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KURVO_CROSS_ARCH KURVO_SYSROOT)

set(CMAKE_SYSTEM_NAME Linux)
if(KURVO_CROSS_ARCH STREQUAL "s390x")
  set(CMAKE_SYSTEM_PROCESSOR s390x)
  set(kurvo_triple s390x-linux-gnu)
  set(kurvo_multiarch s390x-linux-gnu)
  # Programs run at build time (test discovery, the manual page) run under
  # qemu, with the cross toolchain's C library as the root of its loader.
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x-static -L /usr/${kurvo_triple})
elseif(KURVO_CROSS_ARCH STREQUAL "i386")
  set(CMAKE_SYSTEM_PROCESSOR i686)
  set(kurvo_triple i686-linux-gnu)
  set(kurvo_multiarch i386-linux-gnu)
else()
  message(FATAL_ERROR "KURVO_CROSS_ARCH must be s390x or i386, not '${KURVO_CROSS_ARCH}'")
endif()
if(NOT IS_DIRECTORY "${KURVO_SYSROOT}")
  message(FATAL_ERROR "KURVO_SYSROOT '${KURVO_SYSROOT}' is not a folder (scripts/cross-sysroot.sh makes it)")
endif()

set(CMAKE_C_COMPILER ${kurvo_triple}-gcc)
set(CMAKE_CXX_COMPILER ${kurvo_triple}-g++)

# Libraries, headers and CMake packages come from the sysroot only, never
# from the host; programs (pkg-config, nm) come from the host.
set(CMAKE_FIND_ROOT_PATH ${KURVO_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_LIBRARY_ARCHITECTURE ${kurvo_multiarch})
set(ENV{PKG_CONFIG_LIBDIR}
    "${KURVO_SYSROOT}/usr/lib/${kurvo_multiarch}/pkgconfig:${KURVO_SYSROOT}/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${KURVO_SYSROOT})

# The binaries find the sysroot's libraries and the toolchain's C++ runtime
# through DT_RPATH (not RUNPATH, which would not cover libminizip's own need
# of libz). i386 programs run natively, so they name the toolchain's loader.
set(kurvo_libdirs
    ${KURVO_SYSROOT}/lib/${kurvo_multiarch}
    ${KURVO_SYSROOT}/usr/lib/${kurvo_multiarch}
    /usr/${kurvo_triple}/lib)
string(REPLACE ";" ":" kurvo_libpath "${kurvo_libdirs}")
set(kurvo_link_flags "-Wl,--disable-new-dtags -Wl,-rpath,${kurvo_libpath} -Wl,-rpath-link,${kurvo_libpath}")
if(KURVO_CROSS_ARCH STREQUAL "i386")
  string(APPEND kurvo_link_flags " -Wl,--dynamic-linker=/usr/${kurvo_triple}/lib/ld-linux.so.2")
endif()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${kurvo_link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${kurvo_link_flags}")
