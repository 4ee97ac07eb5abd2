#pragma once

namespace oxr::rec {

// What signals do in a program that writes files. To be called by main(), first.
//
// A reader that goes away and a file that may not grow show as failed writes, which are told like any other. A signal
// that ends the process takes its unfinished files along; one that was ignored, as by nohup, stays ignored.
void setSignals();

}  // namespace oxr::rec
