# The parts of the project that a build has: SONIVEX_HAS_SURROUND, SONIVEX_HAS_DIALOGUE and SONIVEX_HAS_NORMALIZER
# for the effects, SONIVEX_FILTER for the filter with its plug-in and the player framework, SONIVEX_TOOLS for the
# programs. SonivexDependencies.cmake sets SONIVEX_LV2 for the LV2 bundle.
set(all_effects surround dialogue normalizer)
set(default_effects surround dialogue normalizer)
if(EMSCRIPTEN)
    set(default_effects surround normalizer) # dialogue enhancement needs FFmpeg
endif()
set(SONIVEX_EFFECTS "${default_effects}" CACHE STRING "Effects to build: a list, or names with commas between")

string(REPLACE "," ";" chosen_effects "${SONIVEX_EFFECTS}")
list(TRANSFORM chosen_effects STRIP)
if(NOT chosen_effects)
    message(FATAL_ERROR "SONIVEX_EFFECTS names no effect; choose from surround, dialogue and normalizer")
endif()
foreach(effect IN LISTS chosen_effects)
    if(NOT effect IN_LIST all_effects)
        message(FATAL_ERROR "SONIVEX_EFFECTS names \"${effect}\", which is not an effect; "
                            "choose from surround, dialogue and normalizer")
    endif()
endforeach()
set(has_all_effects ON)
foreach(effect IN LISTS all_effects)
    string(TOUPPER "${effect}" name)
    if(effect IN_LIST chosen_effects)
        set(SONIVEX_HAS_${name} 1)
    else()
        set(SONIVEX_HAS_${name} 0)
        set(has_all_effects OFF)
    endif()
endforeach()

# These defaults are not cached, so they follow a later change of SONIVEX_EFFECTS.
if(NOT DEFINED SONIVEX_FILTER)
    set(SONIVEX_FILTER ${has_all_effects})
endif()
if(NOT DEFINED SONIVEX_TOOLS)
    set(SONIVEX_TOOLS "${SONIVEX_FILTER}")
endif()

if(SONIVEX_FILTER AND NOT has_all_effects)
    message(FATAL_ERROR "SONIVEX_FILTER needs all three effects, but SONIVEX_EFFECTS is \"${SONIVEX_EFFECTS}\"; "
                        "set SONIVEX_FILTER=OFF, or leave SONIVEX_EFFECTS at its default")
endif()
if(SONIVEX_TOOLS AND NOT SONIVEX_FILTER)
    message(FATAL_ERROR "SONIVEX_TOOLS needs SONIVEX_FILTER: the program runs the filter")
endif()
if(SONIVEX_DEVELOPER AND NOT SONIVEX_TOOLS)
    message(FATAL_ERROR "SONIVEX_DEVELOPER needs SONIVEX_TOOLS and all effects: the tests cover every part")
endif()
if(SONIVEX_SOFA AND NOT SONIVEX_TOOLS)
    message(FATAL_ERROR "SONIVEX_SOFA needs SONIVEX_TOOLS: the generator of the responses is one of the tools")
endif()
