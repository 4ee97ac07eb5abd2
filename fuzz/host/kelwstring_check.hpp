#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include "fuzz/harness/choices.hpp"
#include "kelwstring.hpp"

namespace oxr::fuzz {

// Edits, searches and comparisons of six strings that share blocks, each held against the standard string: contents,
// terminator, and that no other string changes with it. Three have a buffer of 16 units; the lengths lie around that
// and the first block's 37.
inline void checkKelWstring(Choices& choices) {
  using Model = std::basic_string<unsigned short>;
  using Buffered = KelBufferedWstring<16u>;
  KelWstring plain[3];
  Buffered buffered[3];
  KelWstring* const strings[] = {&plain[0], &plain[1], &plain[2], &buffered[0], &buffered[1], &buffered[2]};
  Model models[6];
  while (!choices.isEmpty()) {
    const std::size_t which = choices.upTo(5), other = choices.upTo(5), operation = choices.upTo(13);
    KelWstring& text = *strings[which];
    Model& model = models[which];
    Model fresh(choices.upTo(3) == 0 ? choices.upTo(60) : choices.upTo(18), 0);
    for (auto& unit : fresh)
      unit = static_cast<unsigned short>('a' + choices.upTo(25));
    const auto count = static_cast<unsigned>(fresh.size());
    const auto position = static_cast<unsigned>(choices.upTo(model.size()));
    const auto length = static_cast<unsigned>(choices.upTo(20));
    switch (operation) {
      case 0:
        text.assignInternal(fresh.data(), count, 0), model = fresh;
        break;
      case 1:
        text.appendInternal(fresh.data(), count, 0), model += fresh;
        break;
      case 2:
        text.insertInternal(position, fresh.data(), count, 0), model.insert(position, fresh);
        break;
      case 3:
        text.replaceInternal(position, length, fresh.data(), count, 0), model.replace(position, length, fresh);
        break;
      case 4:
        text.eraseInternal(position, length), model.erase(position, length);
        break;
      case 5:
        text.reserve(count);
        break;
      case 6:
        text.assign(*strings[other]), model = Model(models[other]);
        break;
      case 7: {  // a piece of the string itself is the text
        const std::size_t start = choices.upTo(model.size());
        const Model piece = model.substr(start, length);
        text.replaceInternal(position, 3, text.characters() + start, static_cast<unsigned>(piece.size()), 0);
        model.replace(position, 3, piece);
        break;
      }
      case 8:
        if (position < model.size()) text.at(position) = model[position] = 'X';
        break;
      case 9:
        std::copy(fresh.begin(), fresh.end(), text.resizeForOverwrite(count)), model = fresh;
        break;
      case 10:
        text = text.substr(position, length), model = model.substr(position, length);
        break;
      case 11:
        if (which == other) break;
        text = std::move(*strings[other]), model = models[other];
        *strings[other] = text;  // whatever it was moved from holds now
        break;
      case 12:
        text = Buffered(*strings[other]) + text, model = models[other] + model;
        break;
      default:
        std::copy(fresh.begin(), fresh.end(), text.appendForOverwrite(count)), model += fresh;
    }
    for (std::size_t i = 0; i < 6; ++i) {
      const std::string what = "string " + std::to_string(i) + " after operation " + std::to_string(operation);
      require(Model(strings[i]->view()) == models[i], what);
      require(strings[i]->characters()[strings[i]->length()] == 0, "terminator of " + what);
    }
    require(text == model.c_str(), "comparison with zero-terminated text");
    const Model pattern = model.substr(std::min<std::size_t>(position, model.size()), choices.upTo(3));
    const auto found = model.find(pattern, length);
    require(text.find(KelWstring(oxr::UnitView(pattern)), length) ==
                (found == Model::npos ? KelWstring::npos : static_cast<unsigned>(found)),
            "search");
    const int order = model.compare(models[other]);
    require(text.compare(*strings[other]) == (order > 0) - (order < 0), "order");
  }
}

}  // namespace oxr::fuzz
