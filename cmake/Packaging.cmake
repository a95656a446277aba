# What an installation has beyond the programs, and the Debian package of it: cmake --install, cpack -G DEB.
install(DIRECTORY resources/pets DESTINATION "${NIBBO_SHARE}")
# The glyphs of bubble and settings are compiled in; these are read from the disk.
install(FILES resources/icons/nibbo.svg resources/icons/nibbo-symbolic.svg resources/icons/MenuBarIcon.svg
  resources/icons/MenuBarIcon-symbolic.svg resources/icons/NibboMascot.svg DESTINATION "${NIBBO_SHARE}/icons")
install(FILES resources/desktop/nibbo.desktop DESTINATION share/applications)
install(FILES resources/icons/nibbo.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES resources/icons/nibbo-symbolic.svg DESTINATION share/icons/hicolor/symbolic/apps)
install(FILES LICENSE resources/desktop/copyright DESTINATION share/doc/nibbo)

set(CPACK_PACKAGE_NAME nibbo)
set(CPACK_PACKAGE_VENDOR "The Nibbo project")
set(CPACK_PACKAGE_CONTACT "The Nibbo project")
set(CPACK_PACKAGE_DESCRIPTION "A small animated pet floats above the windows and shows by pose and bubble what the coding
agents in the terminals are doing. A permission request waits until it is answered on
the pet. Agents are connected through their own hooks; their files are backed up first.")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Beyond what the linker knows: a WebP or native Wayland user wants the plug-ins, summaries want a keyring.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-image-formats-plugins, qt6-wayland, fonts-noto-cjk, gnome-keyring | kwalletmanager")
include(CPack)
