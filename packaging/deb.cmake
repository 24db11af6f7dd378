# SPDX-License-Identifier: MIT
# The Debian package; scripts/package makes it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Filmwright developers <developers@filmwright.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "turns MLV raw video recordings into movies")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"A window with a queue, and a command-line program, that turn the MLV raw video
recordings of cameras into MOV or AVI movies with sound. Frames are calibrated
with dark and flat recordings and developed one by one; dual-ISO recordings are
blended. Recordings are only ever read.")
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

# Linked libraries are found by dpkg-shlibdeps. By name: the programs that are run, and the plugin that
# draws the icons, which Debian 12 has in libqt6svg6. The distribution's dcraw develops what ours leaves
# to it: no frame of ours.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src/sluice")
set(CPACK_DEBIAN_PACKAGE_DEPENDS "ffmpeg, qt6-svg-plugins | libqt6svg6 (<< 6.7.2-5~)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "dcraw, default-dbus-session-bus | dbus-session-bus, hicolor-icon-theme, qt6-wayland, shared-mime-info, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-gtk-platformtheme, qt6-qpa-plugins")

set(CPACK_STRIP_FILES ON)
set(CPACK_SET_DESTDIR ON) # so that the rules of installation see the prefix that holds later
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
include(CPack)

execute_process(COMMAND date --utc --rfc-email "--date=${FILMWRIGHT_RELEASE_DATE}"
                OUTPUT_VARIABLE DEBIAN_RELEASE_DATE OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
