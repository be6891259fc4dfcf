# Packages that are headers only and serve every system. They lie among the headers of the building
# system, which a cross compiler must not see: each gets a folder in which nothing else lies.
set(RDV_HEADER_DIR /usr/include CACHE PATH
    "Folder with CLI/ and nlohmann/ (Debian: libcli11-dev, nlohmann-json3-dev)")

# rdv_header_package(TARGET FOLDER)
function(rdv_header_package target folder)
  if(NOT EXISTS "${RDV_HEADER_DIR}/${folder}")
    message(FATAL_ERROR "${RDV_HEADER_DIR}/${folder} is missing: scripts/install-packages.sh build")
  endif()
  set(home "${CMAKE_BINARY_DIR}/headers/${target}")
  file(MAKE_DIRECTORY "${home}")
  file(CREATE_LINK "${RDV_HEADER_DIR}/${folder}" "${home}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE "${home}")
endfunction()

rdv_header_package(rdv_cli11 CLI)
rdv_header_package(rdv_json nlohmann)
