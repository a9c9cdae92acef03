# Makes the configuration folder SAMPLE of the sample libraries, which lie in LIBRARIES: a copy of every
# library and the file that lists them. Files that are there already stay as the user has left them.

set(names mechanics fluids_heat electrical)
set(texts 材料力学 流体力学与传热 电工学)

file(GLOB libraries "${LIBRARIES}/*.mdb")
foreach(library IN LISTS libraries)
  get_filename_component(file "${library}" NAME)
  if(NOT EXISTS "${SAMPLE}/${file}")
    file(COPY "${library}" DESTINATION "${SAMPLE}")
  endif()
endforeach()

set(configuration "${SAMPLE}/Varo-Pelm.ini")
if(NOT EXISTS "${configuration}")
  list(LENGTH names count)
  set(content "[Access]\nNodeCount=${count}\n")
  set(number 0)
  foreach(name text IN ZIP_LISTS names texts)
    math(EXPR number "${number} + 1")
    string(APPEND content "RootNodeText${number}=${text}\n" "RootNodeName${number}=${name}.mdb\n"
                          "RootNodePath${number}=./\n")
  endforeach()
  file(WRITE "${configuration}" "${content}")
endif()
