# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# cmake -DPPD=... -DOUTPUT=... -P make_ppd_words.cmake
#
# Writes the header with the texts of the options in the PPDs (ppd/options.defs) and their German
# translations (ppd/po/de.po).

set(texts "")
set(option "")
file(STRINGS ${PPD}/options.defs lines REGEX "^(Option| *\\*?Choice) ")
foreach(line IN LISTS lines)
  if(line MATCHES "^Option \"([^/]+)/([^\"]+)\"")
    set(option ${CMAKE_MATCH_1})
    string(APPEND texts "    {\"${option}\", \"\", \"${CMAKE_MATCH_2}\"},\n")
  elseif(line MATCHES "Choice \"([^/]+)/([^\"]+)\"")
    string(APPEND texts "    {\"${option}\", \"${CMAKE_MATCH_1}\", \"${CMAKE_MATCH_2}\"},\n")
  endif()
endforeach()

set(translations "")
file(STRINGS ${PPD}/po/de.po lines REGEX "^msg(id|str) \".+\"" ENCODING UTF-8)
foreach(line IN LISTS lines)
  if(line MATCHES "^msgid (\".+\")$")
    set(english ${CMAKE_MATCH_1})
  elseif(line MATCHES "^msgstr (\".+\")$")
    string(APPEND translations "    {${english}, ${CMAKE_MATCH_1}},\n")
  endif()
endforeach()

if(NOT texts OR NOT translations)
  message(FATAL_ERROR "no texts in ${PPD}")
endif()

file(WRITE ${OUTPUT} "// Written by app/web/make_ppd_words.cmake from the sources of the PPDs.

#pragma once

namespace wren::app::web {

struct PpdText {
  const char* option;
  const char* choice;  ///< empty: the option itself
  const char* english;
};

inline constexpr PpdText kPpdTexts[] = {
${texts}};

struct PpdTranslation {
  const char* english;
  const char* german;
};

inline constexpr PpdTranslation kPpdTranslations[] = {
${translations}};

}  // namespace wren::app::web
")
