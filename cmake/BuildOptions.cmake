# What every target of this project is compiled with. Linked PRIVATE, so nothing of it reaches a consumer.
add_library(tracery_build_options INTERFACE)
target_compile_features(tracery_build_options INTERFACE cxx_std_20)
target_compile_options(
  tracery_build_options
  INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
            # Results are bit for bit what the formulas give: no contraction into fused multiply-adds.
            -ffp-contract=off
            # GCC 12 sees overlaps in std::string operations that are not there.
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict> $<$<BOOL:${TRACERY_WERROR}>:-Werror>)

if(TRACERY_SANITIZE)
  target_compile_options(tracery_build_options INTERFACE -fsanitize=${TRACERY_SANITIZE} -fno-sanitize-recover=all
                                                         -fno-omit-frame-pointer)
  target_link_options(tracery_build_options INTERFACE -fsanitize=${TRACERY_SANITIZE})
endif()
