// usage: node build.mjs <page.html> <main.js> <style.css> <header.h> <function> <source.cc>
// Bundles a page into one document and writes it as a C++ source that defines the function of the header.
import { readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));
const [document, main, styles, header, name, output] = process.argv.slice(2);
const read = (name) => readFileSync(join(here, name), "utf8");

async function bundle(entry) {
  const result = await build({
    entryPoints: [join(here, entry)],
    bundle: true,
    minify: true,
    write: false,
    charset: "ascii",
    legalComments: "inline",
    target: "es2020",
  });
  return result.outputFiles[0].text;
}

/// String literals of a length that every compiler takes.
function literals(text) {
  const longest = 8000;
  const escapes = { "\\": "\\\\", '"': '\\"', "\n": "\\n", "\r": "\\r", "\t": "\\t", "?": "\\?" };
  const pieces = [];
  for (let at = 0; at < text.length; at += longest) {
    const piece = text.slice(at, at + longest).replace(/[\\"\n\r\t?]/g, (c) => escapes[c]);
    pieces.push(`    "${piece}"sv,`);
  }
  return pieces.join("\n");
}

const script = (await bundle(main)).replaceAll("</script", "<\\/script");
const style = await bundle(styles);
const page = read(document)
  .replace("/*STYLE*/", () => style)
  .replace("/*SCRIPT*/", () => script);
if (/[^\x00-\x7f]/.test(page)) {
  throw new Error("the page must be plain ASCII to be written as C++ string literals");
}

writeFileSync(
  output,
  `#include "${header}"

namespace zel_monitor {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kPieces[] = {
${literals(page)}
};

}  // namespace

std::span<const std::string_view> ${name}() {
    return kPieces;
}

}  // namespace zel_monitor
`,
);
