# Writes manifest.ttl, sonivex.ttl and presets.ttl, in which hosts read what the plug-ins are. The indices of the ports
# are those of plugin_kinds.h.
#
#   sonivex_write_lv2_bundle(folder effect...)     only the plug-ins of these effects

# The layouts: names of the channels in the effects' order, and the group of LV2 that they make.
set(lv2_group_2 StereoGroup)
set(lv2_group_6 FivePointOneGroup)
set(lv2_group_8 SevenPointOneGroup)
set(lv2_channels_2 left right)
set(lv2_channels_6 left right centre lfe surround_left surround_right)
set(lv2_channels_8 left right centre lfe back_left back_right side_left side_right)

# The role in LV2 and the title of each channel.
foreach(channel IN ITEMS "left|left|Left" "right|right|Right" "centre|center|Centre"
                         "lfe|lowFrequencyEffects|Low Frequency Effects" "surround_left|rearLeft|Surround Left"
                         "surround_right|rearRight|Surround Right" "back_left|rearLeft|Back Left"
                         "back_right|rearRight|Back Right" "side_left|sideLeft|Side Left"
                         "side_right|sideRight|Side Right")
    string(REPLACE "|" ";" channel "${channel}")
    list(POP_FRONT channel name role title)
    set(lv2_role_${name} ${role})
    set(lv2_title_${name} "${title}")
endforeach()

set(lv2_prefixes
    "@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix log: <http://lv2plug.in/ns/ext/log#> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid: <http://lv2plug.in/ns/ext/urid#> .
@prefix work: <http://lv2plug.in/ns/ext/worker#> .
")

# Appends a port to `ports` and counts it in `port_count`.
macro(lv2_add_port symbol name description)
    if(port_count GREATER 0)
        string(APPEND ports " , ")
    endif()
    string(APPEND ports "[\n        ${description} ;\n        lv2:index ${port_count} ;\n        lv2:symbol \"${symbol}\" ;\n"
                        "        lv2:name \"${name}\"\n    ]")
    math(EXPR port_count "${port_count} + 1")
endmacro()

# direction: "in" or "out"
macro(lv2_add_audio_ports uri direction class channels)
    foreach(channel IN LISTS lv2_channels_${channels})
        string(CONCAT description "a lv2:${class} , lv2:AudioPort ;\n        lv2:designation pg:${lv2_role_${channel}} ;\n"
                                  "        pg:group <${uri}#${direction}>")
        lv2_add_port(${direction}_${channel} "${lv2_title_${channel}} ${direction}" "${description}")
    endforeach()
endmacro()

macro(lv2_add_control symbol name least greatest standard more)
    string(CONCAT description "a lv2:InputPort , lv2:ControlPort ;\n        lv2:minimum ${least} ;\n"
                              "        lv2:maximum ${greatest} ;\n        lv2:default ${standard} ;\n        ${more}")
    lv2_add_port("${symbol}" "${name}" "${description}")
endmacro()

# Ends `text` with the scale points of an enumeration, given as value|label.
macro(lv2_enumeration text)
    set(${text} "lv2:portProperty lv2:integer , lv2:enumeration , pprops:expensive ;\n        lv2:scalePoint ")
    set(separator "")
    foreach(point ${ARGN})
        string(REPLACE "|" ";" point "${point}")
        list(POP_FRONT point value label)
        string(APPEND ${text} "${separator}[ rdfs:label \"${label}\" ; rdf:value ${value} ]")
        set(separator " , ")
    endforeach()
endmacro()

# The limiter is an enumeration, because some hosts start every toggle as off.
lv2_enumeration(lv2_types "1|3DSurround" "13|MegaBass")
lv2_enumeration(lv2_modes "1|Small room" "2|Medium room" "3|Large room")
lv2_enumeration(lv2_limiters "0|Clip peaks" "1|Limit peaks")

macro(lv2_add_effect_controls effect)
    if("${effect}" STREQUAL "surround")
        lv2_add_control(type "Type" 1 13 1 "${lv2_types}")
        lv2_add_control(mode "Room of MegaBass" 1 3 1 "${lv2_modes}")
        lv2_add_control(limiter "Limiter" 0 1 1 "${lv2_limiters}")
    elseif("${effect}" STREQUAL "dialogue")
        lv2_add_control(voice "Voice level" 1.0 10.0 1.0 "units:unit units:coef")
    endif()
endmacro()

function(lv2_group out uri direction class title channels)
    set(${out}
        "<${uri}#${direction}>
    a pg:${lv2_group_${channels}} , pg:${class} ;
    lv2:symbol \"${direction}\" ;
    lv2:name \"${title}\" .

"
        PARENT_SCOPE)
endfunction()

# Appends one plug-in to `manifest` and `plugins`.
macro(lv2_add_plugin suffix name effect class features channels_in channels_out comment)
    set(uri "urn:sonivex:lv2:${suffix}")
    set(ports "")
    set(port_count 0)
    lv2_add_audio_ports("${uri}" in InputPort ${channels_in})
    lv2_add_audio_ports("${uri}" out OutputPort ${channels_out})
    lv2_add_control(bypass "Bypass" 0 1 0 "lv2:portProperty lv2:toggled , lv2:integer")
    string(CONCAT latency "a lv2:OutputPort , lv2:ControlPort ;\n        lv2:minimum 0 ;\n        lv2:maximum 8192 ;\n"
                          "        lv2:designation lv2:latency ;\n        lv2:portProperty lv2:reportsLatency , lv2:integer ;\n"
                          "        units:unit units:frame")
    lv2_add_port(latency "Latency" "${latency}")
    lv2_add_effect_controls(${effect})
    lv2_group(group_in "${uri}" in InputGroup "Input" ${channels_in})
    lv2_group(group_out "${uri}" out OutputGroup "Output" ${channels_out})
    string(APPEND manifest "<${uri}>\n    a lv2:Plugin ;\n    lv2:binary <sonivex.so> ;\n    rdfs:seeAlso <sonivex.ttl> .\n\n")
    string(APPEND plugins "${group_in}${group_out}<${uri}>\n    a lv2:Plugin , lv2:${class} ;\n    lv2:project <urn:sonivex> ;\n"
        "    doap:name \"Sonivex ${name}\" ;\n    doap:license <http://spdx.org/licenses/${lv2_license}> ;\n"
        "    rdfs:comment \"${comment}\" ;\n"
        "    lv2:minorVersion ${PROJECT_VERSION_MINOR} ;\n    lv2:microVersion ${PROJECT_VERSION_PATCH} ;\n    ${features} ;\n"
        "    pg:mainInput <${uri}#in> ;\n    pg:mainOutput <${uri}#out> ;\n    lv2:port ${ports} .\n\n")
endmacro()

# Appends a preset of a plug-in to `manifest` and `presets`. values: symbol=value...
macro(lv2_add_preset suffix name label)
    set(uri "urn:sonivex:lv2:${suffix}")
    set(points "")
    set(separator "")
    foreach(value ${ARGN})
        string(REGEX REPLACE "(.*)=(.*)" "[ lv2:symbol \"\\1\" ; pset:value \\2 ]" point "${value}")
        string(APPEND points "${separator}${point}")
        set(separator " ,\n        ")
    endforeach()
    string(APPEND manifest "<${uri}:${name}>\n    a pset:Preset ;\n    lv2:appliesTo <${uri}> ;\n    rdfs:seeAlso <presets.ttl> .\n\n")
    string(APPEND presets "<${uri}:${name}>\n    a pset:Preset ;\n    lv2:appliesTo <${uri}> ;\n    rdfs:label \"${label}\" ;\n"
                          "    lv2:port ${points} .\n\n")
endmacro()

function(sonivex_write_lv2_bundle folder)
    set(manifest "${lv2_prefixes}\n")
    set(presets "${lv2_prefixes}\n")
    string(CONCAT plugins "${lv2_prefixes}\n<urn:sonivex>\n    a doap:Project ;\n    doap:name \"Sonivex\" ;\n"
                "    doap:shortdesc \"${PROJECT_DESCRIPTION}\" .\n\n")
    set(log_features "log:log , urid:map")
    if("surround" IN_LIST ARGN)
        set(features "lv2:optionalFeature work:schedule , ${log_features} ;\n    lv2:extensionData work:interface")
        set(comment "Renders loudspeakers in a room for headphones.")
        foreach(layout IN ITEMS "stereo|Stereo|2" "51|5.1|6" "71|7.1|8")
            string(REPLACE "|" ";" layout "${layout}")
            list(POP_FRONT layout suffix title channels)
            lv2_add_plugin(surround-${suffix} "Surround ${title}" surround SpatialPlugin "${features}" ${channels} 2 "${comment}")
            lv2_add_preset(surround-${suffix} neutral "3DSurround" type=1 mode=1 limiter=1)
            lv2_add_preset(surround-${suffix} megabass-small "MegaBass, small room" type=13 mode=1 limiter=1)
            lv2_add_preset(surround-${suffix} megabass-medium "MegaBass, medium room" type=13 mode=2 limiter=1)
            lv2_add_preset(surround-${suffix} megabass-large "MegaBass, large room" type=13 mode=3 limiter=1)
        endforeach()
    endif()
    set(features "lv2:optionalFeature lv2:hardRTCapable , ${log_features}")
    if("dialogue" IN_LIST ARGN)
        set(comment "Raises speech that both channels share.")
        lv2_add_plugin(dialogue "Dialogue Enhancement" dialogue SpectralPlugin "${features}" 2 2 "${comment}")
        lv2_add_preset(dialogue gentle "Gentle" voice=1.0)
        lv2_add_preset(dialogue films "Films" voice=2.0)
        lv2_add_preset(dialogue talk "Talk" voice=4.0)
    endif()
    if("normalizer" IN_LIST ARGN)
        set(comment "Raises quiet programme by up to 20 dB.")
        foreach(layout IN ITEMS "stereo|Stereo|2" "51|5.1|6" "71|7.1|8")
            string(REPLACE "|" ";" layout "${layout}")
            list(POP_FRONT layout suffix title channels)
            lv2_add_plugin(normalizer-${suffix} "Normalizer ${title}" normalizer DynamicsPlugin "${features}" ${channels}
                           ${channels} "${comment}")
        endforeach()
    endif()
    file(CONFIGURE OUTPUT "${folder}/manifest.ttl" CONTENT "${manifest}" @ONLY)
    file(CONFIGURE OUTPUT "${folder}/sonivex.ttl" CONTENT "${plugins}" @ONLY)
    file(CONFIGURE OUTPUT "${folder}/presets.ttl" CONTENT "${presets}" @ONLY)
endfunction()
