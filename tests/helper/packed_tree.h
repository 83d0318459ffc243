// Compressed archives as a test wants them: right ones, and hostile ones.
#pragma once

#include <fmt/format.h>
#include <zlib.h>

#include <string>
#include <string_view>

namespace corvane::testing {

// One entry: its header, and its content in whole blocks. A `name` of 100 characters at most.
inline std::string tarEntry(const std::string& name, std::string_view content, char type = '0') {
  std::string header(512, '\0');
  const auto put = [&](std::size_t at, const std::string& text) { header.replace(at, text.size(), text); };
  put(0, name);
  put(100, "0000644");
  put(108, "0000000");
  put(116, "0000000");
  put(124, fmt::format("{:011o}", content.size()));
  put(136, "00000000000");
  put(148, "        ");
  header[156] = type;
  put(257, "ustar");
  put(263, "00");
  unsigned sum = 0;
  for (const unsigned char c : header) sum += c;
  put(148, fmt::format("{:06o}", sum));
  header[154] = '\0';
  header += content;
  header.resize((header.size() + 511) / 512 * 512, '\0');
  return header;
}

inline std::string tarEnd() { return std::string(1024, '\0'); }

inline std::string gzipped(const std::string& bytes) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&stream, bytes.size()) + 64, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  deflate(&stream, Z_FINISH);
  out.resize(out.size() - stream.avail_out);
  deflateEnd(&stream);
  return out;
}

}  // namespace corvane::testing
