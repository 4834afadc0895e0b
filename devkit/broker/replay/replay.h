/** Recorded commands, carried out again by a plug-in whose daemon is played from the recording. */
#pragma once

#include "devkit/broker/command.h"
#include "devkit/recording/recording.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/** One command, made again. */
struct Replayed {
    std::string command;                 // its words
    std::size_t line = 0;                // of the recording
    std::vector<std::string> difference; // in unified format; empty: it came as recorded
};

/**
 * Makes every command of a recording again, each on the state that it was recorded on; what an
 * earlier one did otherwise does not reach a later one.
 *
 * @param text     the recording
 * @param name     what it is called in complaints and differences
 * @param against  the plug-in; empty: the one beside the broker
 * @throws BadRecording        it is damaged, or does not tell what a replay needs
 * @throws std::runtime_error  the plug-in or the device fails
 */
std::vector<Replayed>
replay_recording(const std::string& text, const std::string& name, const std::string& against);

/** A line for each command, what differs below it, and how many do. */
std::string for_people(const std::vector<Replayed>& commands);

/** An array of {"command", "line", "as_recorded", "difference": lines}. */
nlohmann::ordered_json as_json(const std::vector<Replayed>& commands);

/** Whether all came as recorded. */
bool as_recorded(const std::vector<Replayed>& commands);
