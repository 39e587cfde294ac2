# Writes the built-in findings rules (every rules/*.sql, in name order) into
# a C++ include file as raw string literals: the rules ship inside
# reportcheck. Run as a script at build time:
#   cmake -DRULES_DIR=<rules> -DOUTPUT=<file.inc> -P cmake/EmbedRules.cmake
file(GLOB rule_files "${RULES_DIR}/*.sql")
list(SORT rule_files)
set(text "// Made by cmake/EmbedRules.cmake from rules/*.sql: do not edit.\n")
string(APPEND text "struct BuiltInRuleFile {\n    const char* name;\n    const char* text;\n};\n")
string(APPEND text "inline constexpr BuiltInRuleFile kBuiltInRuleFiles[] = {\n")
foreach(rule_file IN LISTS rule_files)
  get_filename_component(name "${rule_file}" NAME)
  file(READ "${rule_file}" body)
  if(body MATCHES "\\)rule\"")
    message(FATAL_ERROR "${rule_file} holds )rule\", which ends the literal it is embedded in")
  endif()
  string(APPEND text "    {\"${name}\", R\"rule(${body})rule\"},\n")
endforeach()
string(APPEND text "};\n")
# Written only when changed, so that an unchanged rule set builds nothing.
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" old)
endif()
if(NOT old STREQUAL text)
  file(WRITE "${OUTPUT}" "${text}")
endif()
