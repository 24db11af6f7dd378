# SPDX-License-Identifier: MIT
# Runs at installation: puts a link to FILMWRIGHT_TOOL into FILMWRIGHT_LIBEXECDIR. Below the same prefix
# the link is relative, as Debian wants it.
set(folder "${CMAKE_INSTALL_PREFIX}/${FILMWRIGHT_LIBEXECDIR}")
set(target "${FILMWRIGHT_TOOL}")
cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX "${target}" NORMALIZE below_prefix)
if(below_prefix)
    file(RELATIVE_PATH target "${folder}" "${target}")
endif()
cmake_path(GET FILMWRIGHT_TOOL FILENAME name)
message(STATUS "Installing: $ENV{DESTDIR}${folder}/${name} -> ${target}")
file(MAKE_DIRECTORY "$ENV{DESTDIR}${folder}")
file(CREATE_LINK "${target}" "$ENV{DESTDIR}${folder}/${name}" SYMBOLIC)
list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${folder}/${name}")
