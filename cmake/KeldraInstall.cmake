# What is installed where, and the Debian package: `cmake --install build/release`, or `cpack` in build/release, when the
# target keldra is built. Tests and benches need not be.

include(GNUInstallDirs)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(KELDRA_LICENSE GPL-3.0-or-later)
# Of the newest entry of the metainfo; a release sets it.
set(KELDRA_RELEASE_DATE 2026-11-23)

set(generated ${CMAKE_BINARY_DIR}/desktop)
set(sources ${CMAKE_SOURCE_DIR}/resources)
configure_file(${sources}/desktop/com.keldra.KELDRA.desktop.in ${generated}/${KELDRA_APPLICATION_ID}.desktop @ONLY)
configure_file(${sources}/desktop/com.keldra.KELDRA.metainfo.xml.in ${generated}/${KELDRA_APPLICATION_ID}.metainfo.xml @ONLY)
configure_file(${sources}/desktop/keldra.1.in ${generated}/keldra.1 @ONLY)

install(TARGETS keldra RUNTIME)
install(FILES ${generated}/${KELDRA_APPLICATION_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${generated}/${KELDRA_APPLICATION_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${generated}/keldra.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
set(hicolor ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${sources}/icons/keldra.svg DESTINATION ${hicolor}/scalable/apps RENAME ${KELDRA_APPLICATION_ID}.svg)
install(FILES ${sources}/icons/keldra-mark.svg DESTINATION ${hicolor}/symbolic/apps
  RENAME ${KELDRA_APPLICATION_ID}-symbolic.svg)
install(FILES ${sources}/completions/keldra.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  RENAME keldra)
install(FILES ${sources}/completions/_keldra DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${sources}/completions/keldra.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
install(FILES ${CMAKE_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME keldra)
set(CPACK_PACKAGE_VENDOR KELDRA)
set(CPACK_PACKAGE_CONTACT "KELDRA <packages@keldra.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "screen recorder with a built-in video editor")
set(CPACK_PACKAGE_DESCRIPTION "KELDRA records a display, a window or an area of the screen, with voice, camera and pointer effects,
and turns movies into polished MP4 files.")
set(CPACK_PACKAGE_HOMEPAGE_URL "")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is loaded by name when the program runs: QML modules, the drawing of SVG icons, X11 windows.
file(STRINGS ${CMAKE_SOURCE_DIR}/scripts/packages-run loadedByName REGEX "^[^#]")
list(JOIN loadedByName ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
# On Wayland windows come by the second last, and the screen by the last.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pipewire, wireplumber, qt6-wayland, xdg-desktop-portal")
include(CPack)
