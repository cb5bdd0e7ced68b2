// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/support/ppd_text.h"

namespace wren_test {

namespace {

constexpr char kHead[] =
    "*PPD-Adobe: \"4.3\"\n"
    "*FormatVersion: \"4.3\"\n"
    "*FileVersion: \"1.0\"\n"
    "*LanguageVersion: English\n"
    "*LanguageEncoding: ISOLatin1\n"
    "*PCFileName: \"WRENTEST.PPD\"\n"
    "*Manufacturer: \"Wren\"\n"
    "*Product: \"(Wren test)\"\n"
    "*PSVersion: \"(3010.000) 0\"\n"
    "*ModelName: \"Wren test\"\n"
    "*ShortNickName: \"Wren test\"\n"
    "*NickName: \"Wren test\"\n"
    "*LanguageLevel: \"3\"\n"
    "*ColorDevice: False\n"
    "*DefaultColorSpace: Gray\n"
    "*FileSystem: False\n"
    "*Throughput: \"1\"\n"
    "*TTRasterizer: Type42\n";

const std::vector<std::string> kHalftoneTypes = {"None",   "FloydSteinberg", "Ordered",
                                                 "Burkes", "Stucki",         "JarvisJudiceNinke",
                                                 "Sierra", "StevensonArce",  "QVDithering"};

}  // namespace

PpdText::PpdText() : content_(kHead) {}

PpdText& PpdText::option(const std::string& keyword, const std::vector<std::string>& choices,
                         const std::string& defaultChoice) {
  content_ += "*OpenUI *" + keyword + "/" + keyword + ": PickOne\n";
  content_ += "*OrderDependency: 10 AnySetup *" + keyword + "\n";
  content_ += "*Default" + keyword + ": " + defaultChoice + "\n";
  for (const auto& choice : choices) {
    content_ += "*" + keyword + " " + choice + "/" + choice + ": \"\"\n";
  }
  content_ += "*CloseUI: *" + keyword + "\n";
  return *this;
}

PpdText& PpdText::numbers(const std::string& keyword, int last, int defaultChoice) {
  std::vector<std::string> choices;
  for (int i = 0; i <= last; ++i) choices.push_back(std::to_string(i));
  return option(keyword, choices, std::to_string(defaultChoice));
}

PpdText& PpdText::attribute(const std::string& name, const std::string& value) {
  content_ += "*" + name + ": \"" + value + "\"\n";
  return *this;
}

PpdText& PpdText::halftoneType(const std::string& defaultName) {
  return option("HalftoneType", kHalftoneTypes, defaultName);
}

PpdText& PpdText::pageSizes(const std::vector<std::string>& names, const std::string& defaultName) {
  return option("PageSize", names, defaultName);
}

PpdText& PpdText::raw(const std::string& text) {
  content_ += text;
  return *this;
}

PpdText fullPpd(const std::string& halftoneType, const std::string& maxMediaWidth) {
  PpdText ppd;
  ppd.attribute("MaxMediaWidth", maxMediaWidth);
  ppd.pageSizes({"X80MMY200MM", "X72D5MMY100MM", "Letter"}, "X80MMY200MM");
  ppd.numbers("PageType", 1, 0).numbers("BidiPrinting", 1, 0);
  ppd.numbers("PageCutType", 3, 0).numbers("DocCutType", 3, 0);
  ppd.numbers("CashDrawerSetting", 2, 0).numbers("CashDrawerPulseWidth", 8, 0);
  ppd.numbers("Buzzer1Setting", 2, 0)
      .numbers("Buzzer1OnTime", 12, 0)
      .numbers("Buzzer1Repeat", 12, 0);
  ppd.numbers("Buzzer2Setting", 2, 0)
      .numbers("Buzzer2OnTime", 12, 0)
      .numbers("Buzzer2Repeat", 12, 0);
  ppd.numbers("FeedCutAfterJobEnd", 16, 0);
  ppd.halftoneType(halftoneType);
  ppd.option("Brightness", {"-100", "-25", "-20", "0", "20", "25", "100"}, "0");
  return ppd;
}

}  // namespace wren_test
