"""What every template generator shares: scene files, painting, video, sound, texture files."""
