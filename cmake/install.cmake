# What `cmake --install build --prefix PREFIX` puts where. The program finds its module and its help page from where it
# stands, as ../lib/delvane and ../share/delvane: these two are fixed.
include(GNUInstallDirs)

install(TARGETS delvane RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(DELVANE_QT)
  install(TARGETS delvane_qt LIBRARY DESTINATION lib/delvane)
endif()
install(FILES docs/Using.htm docs/review.md docs/review.png docs/ci.md docs/fleet.md DESTINATION share/delvane)
install(DIRECTORY docs/pictures DESTINATION share/delvane)

configure_file(docs/delvane.1 ${CMAKE_BINARY_DIR}/delvane.1 @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/delvane.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES packaging/delvane.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME delvane)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)

# For the desktop: the entry and its icon.
if(DELVANE_QT)
  install(FILES packaging/delvane.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  foreach(size 32 48 64 128 256)
    install(FILES resources/pictures/icon-${size}.png
            DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps RENAME delvane.png)
  endforeach()
endif()
