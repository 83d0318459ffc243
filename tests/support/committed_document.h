// Documents that are made from the code and committed beside it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace corvane {

// Holds the committed file at `place` in the sources against `made`. With CORVANE_UPDATE_DOCS in the environment, as
// `make docs` sets it, the file is written anew first.
inline void expectCommitted(const std::string& place, const std::string& made) {
  const auto path = std::filesystem::path(CORVANE_SOURCE_FOLDER) / place;
  if (std::getenv("CORVANE_UPDATE_DOCS")) std::ofstream(path, std::ios::binary) << made;
  std::ifstream file(path, std::ios::binary);
  std::ostringstream committed;
  committed << file.rdbuf();
  EXPECT_EQ(committed.str(), made) << place << " is not what the code says; `make docs` writes it anew";
}

}  // namespace corvane
