# SPDX-License-Identifier: MIT
# Runs at installation, where the prefix is known: the bus wants the program's whole path.
set(service "${CMAKE_INSTALL_PREFIX}/share/dbus-1/services/org.filmwright.Filmwright.service")
message(STATUS "Installing: $ENV{DESTDIR}${service}")
configure_file("${FILMWRIGHT_BUS_SERVICE}" "$ENV{DESTDIR}${service}" @ONLY)
list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${service}")
