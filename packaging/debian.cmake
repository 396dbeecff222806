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
