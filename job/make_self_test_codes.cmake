# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# cmake -DZINT=... -DQRENCODE=... -DOUTPUT=... -P make_self_test_codes.cmake
#
# Writes the header with the two codes of the self-test page: the modules of a bar code (Code 128)
# as zint makes them, and those of a QR code as qrencode makes them.

set(bar_text "WREN-TEST")
set(qr_text "WREN SELF-TEST")

# The bits of the symbol in hexadecimal, padded at the end. Code 128 ends in a bar.
execute_process(COMMAND ${ZINT} -b CODE128 -d ${bar_text} --dump
                OUTPUT_VARIABLE bits COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "[ \r\n]" "" bits "${bits}")
set(digits 0 1 2 3 4 5 6 7 8 9 A B C D E F)
set(nibbles oooo oooi ooio ooii oioo oioi oiio oiii iooo iooi ioio ioii iioo iioi iiio iiii)
foreach(digit nibble IN ZIP_LISTS digits nibbles)
  string(REPLACE ${digit} ${nibble} bits "${bits}")
endforeach()
string(REPLACE o 0 bits "${bits}")
string(REPLACE i 1 bits "${bits}")
string(REGEX REPLACE "0+$" "" bits "${bits}")
# Start of code set B at the front, the stop pattern at the end.
if(NOT bits MATCHES "^11010010000[01]+1100011101011$")
  message(FATAL_ERROR "${ZINT} made no Code 128: ${bits}")
endif()

# Two letters for each module of a row.
execute_process(COMMAND ${QRENCODE} -t ASCII -m 0 -v 1 -l M ${qr_text}
                OUTPUT_VARIABLE modules COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "##" "1" modules "${modules}")
string(REPLACE "  " "0" modules "${modules}")
string(REGEX MATCHALL "[^\n]+" rows "${modules}")
list(LENGTH rows side)
set(row_lines "")
foreach(row IN LISTS rows)
  string(LENGTH "${row}" length)
  if(NOT length EQUAL side OR NOT row MATCHES "^[01]+$")
    message(FATAL_ERROR "${QRENCODE} made no square of modules: ${modules}")
  endif()
  string(APPEND row_lines "    \"${row}\",\n")
endforeach()

file(WRITE ${OUTPUT} "// Written by job/make_self_test_codes.cmake with zint and qrencode.

#pragma once

#include <array>
#include <string_view>

namespace wren::job {

/// The modules of the bar code from left to right, 1 for a bar, without the quiet zones.
inline constexpr std::string_view kBarCodeText = \"${bar_text}\";
inline constexpr std::string_view kBarCodeModules =
    \"${bits}\";

/// The rows of the QR code from top to bottom, 1 for a dark module, without the quiet zone.
inline constexpr std::string_view kQrCodeText = \"${qr_text}\";
inline constexpr std::array<std::string_view, ${side}> kQrCodeRows = {{
${row_lines}}};

}  // namespace wren::job
")
