// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The document that is to be printed: whether it can be used, and its type.

#pragma once

#include <string>
#include <string_view>

namespace wren::cli {

/// The MIME type by the contents: PDF, PNG and JPEG by their first bytes, text if there are no
/// control characters. Empty for anything else.
std::string_view documentType(const std::string& path);

/// The type of a document that exists, can be read and is not empty. Throws a Failure that says
/// what is wrong otherwise.
std::string_view checkDocument(const std::string& path);

/// Throws a Failure if a path of a result is the document itself.
void keepDocument(const std::string& document, const std::string& result);

/// The name of the document without folders and extension.
std::string documentStem(const std::string& path);

}  // namespace wren::cli
