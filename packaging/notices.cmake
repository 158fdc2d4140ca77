# cmake -DOUTPUT=FILE -DPACKAGES=zlib1g;... -P notices.cmake: the licences of the libraries that are linked in, as their
# packages tell them.
set(text "Vexa Editor\n\nThe programs contain these libraries; each is used under its own licence, which follows.\n")
foreach(package ${PACKAGES})
  set(file /usr/share/doc/${package}/copyright)
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "${file} is missing: a package without the notices of its libraries must not be made.")
  endif()
  file(READ ${file} content)
  string(APPEND text "\n----------------------------------------------------------------------\n${package}\n\n${content}")
endforeach()
file(WRITE ${OUTPUT} "${text}")
