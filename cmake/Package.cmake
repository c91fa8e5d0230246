# The Debian package, made by `cpack -G DEB` in a build configured for the
# prefix /usr (scripts/package does both).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kestrin)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Kestrin developers")
set(CPACK_PACKAGE_CONTACT "Kestrin developers <maintainers@users.noreply.c-seed-54c2fd83.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "two-pane file manager in the BeOS tradition")
set(CPACK_PACKAGE_DESCRIPTION
    "Kestrin shows one to ten folders side by side and copies, moves, links,\n\
renames, trashes and deletes entries between them, mostly from the keyboard.\n\
Panes also show query results over the local disks, the contents of\n\
archives, and the folder tree; a viewer shows texts of any size and images.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The libraries the programs link, as dpkg-shlibdeps finds them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Opening documents and help pages, and a terminal for the Terminal command.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, xterm | x-terminal-emulator")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
