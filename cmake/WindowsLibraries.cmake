# The libraries that the rooms link on Windows, under the names of the packages on Linux: OpenSSL and
# ACE as built by scripts/build-windows-libraries, the header-only libraries as installed by Debian,
# and GoogleTest from source.
set(ORVA_WINDOWS_LIBRARIES "" CACHE PATH "The folder that scripts/build-windows-libraries printed")
if(NOT EXISTS ${ORVA_WINDOWS_LIBRARIES}/complete)
  message(FATAL_ERROR
    "Set ORVA_WINDOWS_LIBRARIES to what scripts/build-windows-libraries prints.")
endif()

function(orva_static_library name file)
  add_library(${name} STATIC IMPORTED GLOBAL)
  set_target_properties(${name} PROPERTIES
    IMPORTED_LOCATION ${ORVA_WINDOWS_LIBRARIES}/lib/${file}
    INTERFACE_INCLUDE_DIRECTORIES ${ORVA_WINDOWS_LIBRARIES}/include)
endfunction()

orva_static_library(OpenSSL::Crypto libcrypto.a)
target_link_libraries(OpenSSL::Crypto INTERFACE ws2_32 crypt32 bcrypt)
orva_static_library(PkgConfig::ACE libACE.a)
target_compile_definitions(PkgConfig::ACE INTERFACE ACE_AS_STATIC_LIBS __ACE_INLINE__)
target_link_libraries(PkgConfig::ACE INTERFACE ws2_32 mswsock netapi32 iphlpapi)

# Only these folders, since the headers of the Linux C library are beside them.
set(headers ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headers})
foreach(folder spdlog fmt utf8cpp nlohmann)
  if(NOT IS_DIRECTORY /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing; scripts/install-packages build installs it.")
  endif()
  file(CREATE_LINK /usr/include/${folder} ${headers}/${folder} SYMBOLIC)
endforeach()

function(orva_header_library name)
  add_library(${name} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${name} SYSTEM INTERFACE ${headers})
endfunction()

orva_header_library(spdlog::spdlog_header_only)
target_compile_definitions(spdlog::spdlog_header_only INTERFACE
  SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY SPDLOG_WCHAR_FILENAMES)
orva_header_library(utf8cpp)
target_include_directories(utf8cpp SYSTEM INTERFACE ${headers}/utf8cpp)
orva_header_library(nlohmann_json::nlohmann_json)

if(ORVA_BUILD_TESTS)
  set(gtest_force_shared_crt ON)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  if(NOT TARGET GTest::gmock) # some releases make the aliases themselves
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gmock ALIAS gmock)
  endif()
endif()
