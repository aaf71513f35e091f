# The Debian package "tavrin": the program, the helper daemon with its unit and resolver script,
# the desktop entry, icons and manual pages. Built with `cpack -G DEB` in a build directory
# (scripts/package).
include(GNUInstallDirs)

install(FILES ${CMAKE_CURRENT_LIST_DIR}/tavrin.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_SOURCE_DIR}/resources/icons/logo.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
        RENAME tavrin.svg)

# Compressed as Debian policy asks, like the manual pages below; -n keeps the archive reproducible.
set(changelog_gz ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
add_custom_command(OUTPUT ${changelog_gz}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
    COMMAND sh -c "gzip -9n -c '${CMAKE_CURRENT_LIST_DIR}/debian/changelog' > '${changelog_gz}'"
    DEPENDS ${CMAKE_CURRENT_LIST_DIR}/debian/changelog
    VERBATIM)
set(man_pages_gz)
foreach(page tavrin.1 tavrin-helperd.8)
    string(REGEX REPLACE ".*\\.([0-9])$" "\\1" section ${page})
    set(page_gz ${CMAKE_BINARY_DIR}/packaging/${page}.gz)
    add_custom_command(OUTPUT ${page_gz}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
        COMMAND sh -c "gzip -9n -c '${CMAKE_CURRENT_LIST_DIR}/man/${page}' > '${page_gz}'"
        DEPENDS ${CMAKE_CURRENT_LIST_DIR}/man/${page}
        VERBATIM)
    list(APPEND man_pages_gz ${page_gz})
    install(FILES ${page_gz} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
add_custom_target(tavrin_package_docs ALL DEPENDS ${changelog_gz} ${man_pages_gz})
install(FILES ${changelog_gz} ${CMAKE_CURRENT_LIST_DIR}/debian/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tavrin)

# The vendor's key for updates: the package installs its public half and the debsig-verify policy
# that trusts it, and tavrin-helperd installs only packages it signed. A release gives the key
# (scripts/release); without one, a key is made here and its secret thrown away, so such a build's
# package takes no update at all.
set(TAVRIN_UPDATE_KEY "" CACHE FILEPATH "Public OpenPGP key (gpg --export) whose primary key signs update packages")
set(update_key ${TAVRIN_UPDATE_KEY})
if(NOT update_key)
    set(update_key ${CMAKE_BINARY_DIR}/packaging/throwaway-update-key.gpg)
    if(NOT EXISTS ${update_key})
        file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/packaging)
        execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/update-key.sh throwaway ${update_key}
                        RESULT_VARIABLE key_status)
        if(NOT key_status EQUAL 0)
            message(FATAL_ERROR "cannot make a throw-away update key (gpg, scripts/install-deps)")
        endif()
    endif()
    message(STATUS "No TAVRIN_UPDATE_KEY: the package trusts a throw-away key and takes no update")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${update_key})
set(update_trust ${CMAKE_BINARY_DIR}/packaging/update-trust)
file(REMOVE_RECURSE ${update_trust})
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/update-key.sh trust ${update_key} ${update_trust}
                OUTPUT_VARIABLE update_key_id OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE key_status)
if(NOT key_status EQUAL 0)
    message(FATAL_ERROR "TAVRIN_UPDATE_KEY ${update_key} is not a usable signing key")
endif()
install(FILES ${update_trust}/usr/share/debsig/keyrings/${update_key_id}/tavrin.gpg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/debsig/keyrings/${update_key_id})
install(FILES ${update_trust}/etc/debsig/policies/${update_key_id}/tavrin.pol
        DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/debsig/policies/${update_key_id})
file(WRITE ${CMAKE_BINARY_DIR}/packaging/conffiles "/etc/debsig/policies/${update_key_id}/tavrin.pol\n")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavrin)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Tavrin developers <tavrin@velmora.com>")
set(CPACK_PACKAGE_VENDOR Velmora)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop client of the Velmora VPN service")
set(CPACK_PACKAGE_DESCRIPTION
    "Tavrin signs in to the Velmora VPN service, lists its locations and\nconnects through OpenVPN over UDP or TCP, or inside TLS through a local\nstunnel. A privileged helper daemon starts OpenVPN and manages the\nkill-switch firewall, the time zone and updates.")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://velmora.com")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "openvpn, stunnel4, nftables, famfamfam-flag-png, iproute2, debsig-verify, ca-certificates")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_LIST_DIR}/debian/postinst ${CMAKE_CURRENT_LIST_DIR}/debian/prerm ${CMAKE_CURRENT_LIST_DIR}/debian/postrm
    ${CMAKE_BINARY_DIR}/packaging/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
