# What find_package(CCrypto) reads; called once, after the last module of the library.
function(ccrypto_install_package)
    if(NOT CCRYPTO_INSTALL)
        return()
    endif()
    include(CMakePackageConfigHelpers)
    set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/CCrypto")
    configure_package_config_file("${ccryptoRoot}/cmake/CCryptoConfig.cmake.in" "${PROJECT_BINARY_DIR}/CCryptoConfig.cmake"
        INSTALL_DESTINATION "${packageFolder}")
    write_basic_package_version_file("${PROJECT_BINARY_DIR}/CCryptoConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
    install(EXPORT CCryptoTargets NAMESPACE CCrypto:: DESTINATION "${packageFolder}")
    install(FILES "${PROJECT_BINARY_DIR}/CCryptoConfig.cmake" "${PROJECT_BINARY_DIR}/CCryptoConfigVersion.cmake"
        DESTINATION "${packageFolder}")
    install(FILES "${ccryptoRoot}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
endfunction()
