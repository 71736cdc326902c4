#include "shared_pieces.h"

#include <algorithm>

namespace kelvo::host {

SharedPieces::Piece* SharedPieces::Find(int64_t number) {
  const auto found =
      std::find_if(open_.begin(), open_.end(), [=](const Piece& piece) { return piece.number == number; });
  return found == open_.end() ? nullptr : &*found;
}

void SharedPieces::Want(const std::vector<int64_t>& pieces) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (const int64_t number : pieces) {
    if (Find(number) == nullptr) open_.push_back({number, false});
    ahead_ = std::max(ahead_, number + 1);
  }
  changed_.notify_all();
}

std::optional<int64_t> SharedPieces::Begin(const std::vector<int64_t>& own) {
  std::unique_lock<std::mutex> lock(mutex_);
  const auto is_open = [this](int64_t number) { return Find(number) != nullptr; };
  while (std::any_of(own.begin(), own.end(), is_open)) {
    if (Piece* next = Next(own)) {
      next->begun = true;
      return next->number;
    }
    changed_.wait(lock);
  }
  return std::nullopt;
}

SharedPieces::Piece* SharedPieces::Next(const std::vector<int64_t>& own) {
  for (const int64_t number : own)
    if (Piece* piece = Find(number); piece != nullptr && !piece->begun) return piece;
  const auto other = std::find_if(open_.begin(), open_.end(), [](const Piece& piece) { return !piece.begun; });
  if (other != open_.end()) return &*other;
  if (ahead_ >= count_) return nullptr;
  open_.push_back({ahead_++, false});
  return &open_.back();
}

void SharedPieces::End(int64_t number) {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::erase_if(open_, [=](const Piece& piece) { return piece.number == number; });
  changed_.notify_all();
}

}  // namespace kelvo::host
