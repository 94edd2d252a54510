# What a distributor may want to set: the addresses that the program shows and asks. The version has one source, project().
set(VANTORA_PRODUCT_PAGE "https://vantora.example/" CACHE STRING "The product's web page, shown in the About box and in update errors")
set(VANTORA_UPDATE_SERVER "https://updates.vantora.example" CACHE STRING "Scheme, host and port of the update server, without a closing slash")
set(VANTORA_CHANNEL "BETA")
configure_file("${PROJECT_SOURCE_DIR}/cmake/product_config.h.in" "${PROJECT_BINARY_DIR}/generated/product_config.h" @ONLY)
