# CPack runs this between the installation into its folder and the making of the package: what Debian has otherwise than
# `cmake --install` leaves it.
set(usr "${CPACK_TEMPORARY_DIRECTORY}/usr")

foreach(tool uv deno yt-dlp fetched-tools.json)
  if(NOT EXISTS "${usr}/lib/quillet/${tool}")
    message(FATAL_ERROR "The package is not made without ${tool}. Run tools/fetch-tools where there is a network.")
  endif()
endforeach()
# Wherever they lie on this machine.
foreach(tool ffmpeg ffprobe)
  file(CREATE_LINK "../../bin/${tool}" "${usr}/lib/quillet/${tool}" SYMBOLIC)
endforeach()

file(RENAME "${usr}/share/zsh/site-functions" "${usr}/share/zsh/vendor-completions")
file(MAKE_DIRECTORY "${usr}/share/lintian/overrides")
file(COPY_FILE "${CMAKE_CURRENT_LIST_DIR}/lintian-overrides" "${usr}/share/lintian/overrides/quillet")
execute_process(COMMAND gzip -9n man/man1/quillet.1 doc/quillet/changelog WORKING_DIRECTORY "${usr}/share" COMMAND_ERROR_IS_FATAL ANY)
# Whatever the umask was.
execute_process(COMMAND chmod -R u=rwX,go=rX "${usr}" COMMAND_ERROR_IS_FATAL ANY)

# CPack's own look at the libraries would also have the package run ldconfig, for the sake of a module that nothing links.
file(WRITE "${CPACK_TOPLEVEL_DIRECTORY}/debian/control" "Source: quillet\n\nPackage: quillet\nArchitecture: any\n")
execute_process(
  COMMAND dpkg-shlibdeps -O "${usr}/lib/quillet/quillet" "${usr}/lib/quillet/quillet-media.so" "${usr}/lib/quillet/uv"
    "${usr}/lib/quillet/deno"
  WORKING_DIRECTORY "${CPACK_TOPLEVEL_DIRECTORY}" OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "shlibs:Depends=" "" libraries "${libraries}")
string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", ${libraries}")
